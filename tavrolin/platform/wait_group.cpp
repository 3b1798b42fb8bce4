#include "tavrolin/platform/wait_group.h"

#include <mutex>
#include <utility>
#include <vector>

namespace tavrolin::platform {

struct WaitGroup::State {
    explicit State(Dispatch& target) : dispatch(target) {}

    Dispatch& dispatch;
    std::mutex mutex;
    std::size_t underWay = 0;
    std::vector<std::pair<QueuePriority, Block>> waiting;
};

std::shared_ptr<WaitGroup> WaitGroup::make(Dispatch& dispatch) {
    return std::shared_ptr<WaitGroup>(new WaitGroup(dispatch));
}

WaitGroup::WaitGroup(Dispatch& dispatch) : state_(std::make_unique<State>(dispatch)) {}
WaitGroup::~WaitGroup() = default;

void WaitGroup::enter() {
    const std::lock_guard lock(state_->mutex);
    ++state_->underWay;
}

void WaitGroup::leave() {
    {
        const std::lock_guard lock(state_->mutex);
        --state_->underWay;
    }
    runWhenEmpty();
}

void WaitGroup::notify(QueuePriority priority, Block block) {
    {
        const std::lock_guard lock(state_->mutex);
        state_->waiting.emplace_back(priority, std::move(block));
    }
    runWhenEmpty();
}

void WaitGroup::runWhenEmpty() {
    std::vector<std::pair<QueuePriority, Block>> ready;
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->underWay == 0) ready.swap(state_->waiting);
    }
    for (auto& [priority, block] : ready) {
        state_->dispatch.asyncGlobal(priority, std::move(block));
    }
}

}  // namespace tavrolin::platform
