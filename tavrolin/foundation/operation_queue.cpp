#include "tavrolin/foundation/operation_queue.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::foundation {

// --- Operation --------------------------------------------------------------------------------

struct Operation::State {
    mutable std::mutex mutex;
    std::string name;
    std::vector<std::shared_ptr<const Observer>> observers;
    std::atomic<bool> cancelled{false};

    // Observers are called without the lock: they may ask the operation, or add an observer.
    void announce(std::string_view key, bool isPrior) const {
        std::vector<std::shared_ptr<const Observer>> all;
        {
            const std::lock_guard lock(mutex);
            all = observers;
        }
        for (const auto& observer : all)
            (*observer)(key, isPrior);
    }
};

Operation::Operation() : state_(std::make_unique<State>()) {}

Operation::~Operation() = default;

void Operation::cancel() {
    state_->cancelled = true;
}

bool Operation::isCancelled() const {
    return state_->cancelled;
}

std::string Operation::name() const {
    const std::lock_guard lock(state_->mutex);
    return state_->name;
}

void Operation::setName(std::string name) {
    const std::lock_guard lock(state_->mutex);
    state_->name = std::move(name);
}

void Operation::addObserver(Observer observer) {
    auto shared = std::make_shared<const Observer>(std::move(observer));
    const std::lock_guard lock(state_->mutex);
    state_->observers.push_back(std::move(shared));
}

void Operation::willChangeValueForKey(std::string_view key) {
    state_->announce(key, true);
}

void Operation::didChangeValueForKey(std::string_view key) {
    // A queue lets go of a finished operation, and may have been the last to hold it.
    const std::shared_ptr<Operation> self = weak_from_this().lock();
    state_->announce(key, false);
}

// --- OperationQueue ---------------------------------------------------------------------------

struct OperationQueue::State {
    struct Entry {
        std::shared_ptr<Operation> operation;
        bool isStarted = false;
    };

    explicit State(Executor runSoon) : executor(std::move(runSoon)) {}

    // The operation is asked before the lock is taken: it may hold a lock of its own meanwhile.
    void update(const std::shared_ptr<Operation>& operation) {
        if (operation->isFinished()) {
            remove(operation);
        } else if (operation->isReady() && markStarted(operation)) {
            executor([operation] { operation->start(); });
        }
    }

    void remove(const std::shared_ptr<Operation>& operation) {
        const std::lock_guard lock(mutex);
        std::erase_if(entries, [&](const Entry& entry) { return entry.operation == operation; });
    }

    bool markStarted(const std::shared_ptr<Operation>& operation) {
        const std::lock_guard lock(mutex);
        const auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& each) {
            return each.operation == operation;
        });
        return entry != entries.end() && !std::exchange(entry->isStarted, true);
    }

    const Executor executor;
    std::mutex mutex;
    std::vector<Entry> entries;
};

OperationQueue::OperationQueue(Executor executor)
    : state_(std::make_shared<State>(std::move(executor))) {}

OperationQueue::~OperationQueue() = default;

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    if (operation == nullptr) {
        Exception::raise(Exception::kInvalidArgument, "nil can't be put in an operation queue");
    }
    if (operation->isExecuting() || operation->isFinished()) {
        Exception::raise(Exception::kInvalidArgument,
                         "the operation \"" + operation->name() +
                             "\" has been started already and can't be put in a queue");
    }
    {
        const std::lock_guard lock(state_->mutex);
        for (const State::Entry& entry : state_->entries) {
            if (entry.operation == operation) {
                Exception::raise(
                    Exception::kInvalidArgument,
                    "the operation \"" + operation->name() + "\" is in the queue already");
            }
        }
        state_->entries.push_back({operation});
    }
    operation->addObserver([queue = std::weak_ptr(state_), observed = std::weak_ptr(operation)](
                               std::string_view key, bool isPrior) {
        if (isPrior || (key != "isFinished" && key != "isReady")) return;
        const auto state = queue.lock();
        const auto changed = observed.lock();
        if (state != nullptr && changed != nullptr) state->update(changed);
    });
    state_->update(operation);
}

std::vector<std::shared_ptr<Operation>> OperationQueue::operations() const {
    const std::lock_guard lock(state_->mutex);
    std::vector<std::shared_ptr<Operation>> result;
    result.reserve(state_->entries.size());
    for (const State::Entry& entry : state_->entries)
        result.push_back(entry.operation);
    return result;
}

}  // namespace tavrolin::foundation
