#include "tavrolin/foundation/operation_queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::foundation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TestOperation : public Operation {
public:
    explicit TestOperation(bool ready = true) : ready_(ready) {}
    void start() override {
        ++starts;
        set(executing_, "isExecuting", true);
    }
    bool isReady() const override { return ready_; }
    bool isExecuting() const override { return executing_; }
    bool isFinished() const override { return finished_; }
    bool isAsynchronous() const override { return true; }

    void becomeReady() { set(ready_, "isReady", true); }
    void finish() {
        set(executing_, "isExecuting", false);
        set(finished_, "isFinished", true);
    }

    std::atomic<int> starts{0};

private:
    void set(std::atomic<bool>& flag, std::string_view key, bool value) {
        willChangeValueForKey(key);
        flag = value;
        didChangeValueForKey(key);
    }

    std::atomic<bool> ready_;
    std::atomic<bool> executing_{false};
    std::atomic<bool> finished_{false};
};

// Keeps the blocks until the test runs them.
struct Blocks {
    std::deque<std::function<void()>> waiting;

    OperationQueue::Executor executor() {
        return [this](std::function<void()> block) { waiting.push_back(std::move(block)); };
    }
    void run() {
        while (!waiting.empty()) {
            auto block = std::move(waiting.front());
            waiting.pop_front();
            block();
        }
    }
};

TEST(OperationQueue, StartsAsynchronouslyAndHoldsUntilFinished) {
    Blocks blocks;
    OperationQueue queue(blocks.executor());
    auto first = std::make_shared<TestOperation>();
    auto second = std::make_shared<TestOperation>();
    queue.addOperation(first);
    queue.addOperation(second);
    EXPECT_EQ(first->starts, 0);
    blocks.run();
    // Both at once: an operation that waits holds no other one up.
    EXPECT_EQ(first->starts, 1);
    EXPECT_EQ(second->starts, 1);
    EXPECT_THAT(queue.operations(), ElementsAre(first, second));
    first->finish();
    EXPECT_THAT(queue.operations(), ElementsAre(second));
}

TEST(OperationQueue, WaitsUntilTheOperationIsReadyAndStartsItOnce) {
    Blocks blocks;
    OperationQueue queue(blocks.executor());
    auto operation = std::make_shared<TestOperation>(false);
    queue.addOperation(operation);
    blocks.run();
    EXPECT_EQ(operation->starts, 0);
    operation->becomeReady();
    operation->becomeReady();
    blocks.run();
    EXPECT_EQ(operation->starts, 1);
}

TEST(OperationQueue, StartsACancelledOperationAllTheSame) {
    Blocks blocks;
    OperationQueue queue(blocks.executor());
    auto operation = std::make_shared<TestOperation>();
    operation->cancel();
    queue.addOperation(operation);
    blocks.run();
    EXPECT_TRUE(operation->isCancelled());
    EXPECT_EQ(operation->starts, 1);
}

TEST(OperationQueue, MayBeTheLastToHoldAnOperationThatFinishes) {
    Blocks blocks;
    OperationQueue queue(blocks.executor());
    auto operation = std::make_shared<TestOperation>();
    const std::weak_ptr<TestOperation> watched = operation;
    queue.addOperation(operation);
    blocks.run();
    auto* raw = operation.get();
    operation.reset();
    EXPECT_FALSE(watched.expired());
    raw->finish();
    EXPECT_TRUE(watched.expired());
}

TEST(OperationQueue, RefusesWhatCannotBeStarted) {
    Blocks blocks;
    OperationQueue queue(blocks.executor());
    EXPECT_THROW(queue.addOperation(nullptr), Exception);
    auto finished = std::make_shared<TestOperation>();
    finished->finish();
    EXPECT_THROW(queue.addOperation(finished), Exception);
    auto twice = std::make_shared<TestOperation>();
    queue.addOperation(twice);
    EXPECT_THROW(queue.addOperation(twice), Exception);
}

TEST(OperationQueue, OperationsOutliveTheirQueue) {
    Blocks blocks;
    auto operation = std::make_shared<TestOperation>(false);
    { OperationQueue(blocks.executor()).addOperation(operation); }
    operation->becomeReady();
    operation->finish();
    EXPECT_TRUE(operation->isFinished());
}

TEST(OperationQueue, TakesOperationsFromManyThreads) {
    std::vector<std::thread> workers;
    std::mutex mutex;
    OperationQueue queue([&](std::function<void()> block) {
        const std::lock_guard lock(mutex);
        workers.emplace_back(std::move(block));
    });
    std::vector<std::shared_ptr<TestOperation>> operations(24);
    std::vector<std::thread> adders;
    for (auto& operation : operations) {
        operation = std::make_shared<TestOperation>(false);
        adders.emplace_back([&queue, operation] {
            operation->addObserver([operation = operation.get()](std::string_view key, bool prior) {
                if (!prior && key == "isExecuting" && operation->isExecuting()) operation->finish();
            });
            std::thread readier([operation] { operation->becomeReady(); });
            queue.addOperation(operation);
            readier.join();
        });
    }
    for (auto& adder : adders)
        adder.join();
    for (auto& worker : workers)
        worker.join();
    EXPECT_THAT(queue.operations(), IsEmpty());
    for (const auto& operation : operations)
        EXPECT_EQ(operation->starts, 1);
}

TEST(Operation, TellsItsObserversBeforeAndAfterEachChange) {
    TestOperation operation;
    std::vector<std::string> heard;
    operation.addObserver([&](std::string_view key, bool isPrior) {
        heard.push_back((isPrior ? "will " : "did ") + std::string(key) +
                        (operation.isExecuting() ? " executing" : ""));
    });
    operation.start();
    EXPECT_THAT(heard, ElementsAre("will isExecuting", "did isExecuting executing"));
}

}  // namespace
}  // namespace tavrolin::foundation
