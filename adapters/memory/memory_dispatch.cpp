#include "adapters/memory/memory_dispatch.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <utility>

namespace tavrolin::adapters::memory {

using platform::Block;
using RealClock = std::chrono::steady_clock;

namespace {

constexpr auto kSilence = std::chrono::seconds(1);

// An exception that leaves a block ends the process, here as elsewhere.
void run(const Block& block) noexcept {
    block();
}

}  // namespace

struct MemoryDispatch::State {
    mutable std::mutex mutex;
    std::condition_variable changed;
    double now = 0;
    std::deque<Block> ready;
    std::multimap<double, Block> timers;  // equal moments keep the order of insertion
    std::set<const OpenHold*> holds;

    void push(Block block) {
        {
            const std::lock_guard lock(mutex);
            ready.push_back(std::move(block));
        }
        changed.notify_all();
    }

    void runReady(std::unique_lock<std::mutex>& lock) {
        while (!ready.empty()) {
            Block block = std::move(ready.front());
            ready.pop_front();
            lock.unlock();
            run(block);
            block = nullptr;  // what it holds is released without the lock
            lock.lock();
        }
    }

    void moveTo(double moment) {
        now = std::max(now, moment);
        const auto end = timers.upper_bound(moment);
        for (auto it = timers.begin(); it != end; ++it)
            ready.push_back(std::move(it->second));
        timers.erase(timers.begin(), end);
    }

    std::pair<bool, RealClock::time_point> silentFrom() const;
};

class MemoryDispatch::OpenHold : public Hold {
public:
    explicit OpenHold(std::shared_ptr<State> state) : state_(std::move(state)) {
        const std::lock_guard lock(state_->mutex);
        lastProgress_ = RealClock::now();
        state_->holds.insert(this);
    }
    ~OpenHold() override {
        {
            const std::lock_guard lock(state_->mutex);
            state_->holds.erase(this);
        }
        state_->changed.notify_all();
    }
    void progress() override {
        const std::lock_guard lock(state_->mutex);
        lastProgress_ = RealClock::now();
    }
    RealClock::time_point silentFrom() const { return lastProgress_ + kSilence; }

private:
    std::shared_ptr<State> state_;
    RealClock::time_point lastProgress_;
};

// Whether a hold is open, and from when on all of them are silent.
std::pair<bool, RealClock::time_point> MemoryDispatch::State::silentFrom() const {
    RealClock::time_point latest = RealClock::time_point::min();
    for (const OpenHold* hold : holds)
        latest = std::max(latest, hold->silentFrom());
    return {!holds.empty(), latest};
}

MemoryDispatch::MemoryDispatch(foundation::Date start) : state_(std::make_shared<State>()) {
    state_->now = start.secondsSince1970;
}

// What is still queued may own holds and objects that call back, so it is dropped without the lock.
MemoryDispatch::~MemoryDispatch() {
    std::deque<Block> ready;
    std::multimap<double, Block> timers;
    const std::lock_guard lock(state_->mutex);
    ready.swap(state_->ready);
    timers.swap(state_->timers);
}

void MemoryDispatch::runUntilIdle() {
    std::unique_lock lock(state_->mutex);
    for (;;) {
        state_->runReady(lock);
        const auto [isHeld, silentFrom] = state_->silentFrom();
        if (isHeld && RealClock::now() < silentFrom) {
            state_->changed.wait_until(lock, silentFrom);
        } else if (!state_->timers.empty()) {
            state_->moveTo(state_->timers.begin()->first);
        } else {
            return;
        }
    }
}

void MemoryDispatch::runReady() {
    std::unique_lock lock(state_->mutex);
    state_->runReady(lock);
}

void MemoryDispatch::advance(double seconds) {
    std::unique_lock lock(state_->mutex);
    state_->runReady(lock);
    const double end = state_->now + std::max(0.0, seconds);
    while (!state_->timers.empty() && state_->timers.begin()->first <= end) {
        state_->moveTo(state_->timers.begin()->first);
        state_->runReady(lock);
    }
    state_->moveTo(end);
}

bool MemoryDispatch::hasWork() const {
    const std::lock_guard lock(state_->mutex);
    return !state_->ready.empty() || !state_->timers.empty();
}

std::size_t MemoryDispatch::openHolds() const {
    const std::lock_guard lock(state_->mutex);
    return state_->holds.size();
}

foundation::Date MemoryDispatch::now() const {
    const std::lock_guard lock(state_->mutex);
    return {state_->now};
}

void MemoryDispatch::asyncMain(Block block) {
    state_->push(std::move(block));
}

void MemoryDispatch::asyncGlobal(platform::QueuePriority, Block block) {
    state_->push(std::move(block));
}

void MemoryDispatch::afterMain(double seconds, Block block) {
    if (!(seconds > 0)) return state_->push(std::move(block));
    {
        const std::lock_guard lock(state_->mutex);
        state_->timers.emplace(state_->now + seconds, std::move(block));
    }
    state_->changed.notify_all();
}

std::unique_ptr<platform::Dispatch::Hold> MemoryDispatch::hold() {
    return std::make_unique<OpenHold>(state_);
}

}  // namespace tavrolin::adapters::memory
