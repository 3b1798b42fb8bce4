#include "tavrolin/service_extension/push_operation.h"

#include <gmock/gmock.h>

#include "tavrolin/service_extension/notification_queue.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// One that does nothing until it is told to finish.
class PlainOperation : public CVNPushOperation {
public:
    int starts = 0;
    void start() override {
        CVNPushOperation::start();
        ++starts;
    }
};

class PushOperationTest : public MemorySDKTest {
protected:
    PushOperationTest() { operation_->setName("An Operation"); }

    std::string state() const {
        return std::string(operation_->isReady() ? "ready " : "") +
               (operation_->isExecuting() ? "executing " : "") +
               (operation_->isFinished() ? "finished " : "");
    }

    const std::shared_ptr<PlainOperation> operation_ = std::make_shared<PlainOperation>();
};

TEST_F(PushOperationTest, GoesFromReadyOverExecutingToFinished) {
    EXPECT_EQ(state(), "ready ");
    EXPECT_TRUE(operation_->isAsynchronous());
    operation_->finish();  // not started yet
    EXPECT_EQ(state(), "ready ");
    EXPECT_THAT(takeLog(), IsEmpty());

    operation_->start();
    EXPECT_EQ(state(), "executing ");
    operation_->start();
    EXPECT_EQ(state(), "executing ");
    EXPECT_THAT(takeLog(), ElementsAre("(DEBUG) CVNPushOperation: \"An Operation\" Operation "
                                       "Started. -[CVNPushOperation start]"));

    operation_->finish();
    EXPECT_EQ(state(), "finished ");
    operation_->finish();
    EXPECT_EQ(state(), "finished ");
    EXPECT_THAT(takeLog(), ElementsAre("(DEBUG) CVNPushOperation: \"An Operation\" Operation "
                                       "Finished. -[CVNPushOperation finish]"));
}

TEST_F(PushOperationTest, ObserversHearBeforeAndAfterEachRealChange) {
    std::vector<std::string> heard;
    operation_->addObserver([&](std::string_view key, bool isPrior) {
        heard.push_back((isPrior ? "before " : "after ") + std::string(key) + ": " + state());
    });
    operation_->start();
    EXPECT_THAT(heard, ElementsAre("before isReady: ready ", "after isReady: ",
                                   "before isExecuting: ", "after isExecuting: executing "));
    heard.clear();
    operation_->finish();
    EXPECT_THAT(heard, ElementsAre("before isExecuting: executing ", "after isExecuting: ",
                                   "before isFinished: ", "after isFinished: finished "));
    heard.clear();
    operation_->setReady(false);
    operation_->setExecuting(false);
    operation_->setFinished(true);
    EXPECT_THAT(heard, IsEmpty());
    operation_->setReady(true);
    EXPECT_THAT(heard, SizeIs(2));
}

TEST_F(PushOperationTest, ACancelledOneStartsAndFinishesAllTheSame) {
    operation_->cancel();
    EXPECT_TRUE(operation_->isCancelled());
    EXPECT_EQ(state(), "ready ");
    operation_->start();
    EXPECT_EQ(state(), "executing ");
    operation_->finish();
    EXPECT_EQ(state(), "finished ");
}

TEST_F(PushOperationTest, TheQueueStartsEachSoonAndHoldsItUntilItIsFinished) {
    auto& queue = CVNNotificationQueue::sharedInstance();
    std::vector<std::shared_ptr<PlainOperation>> many;
    for (int i = 0; i < 10; ++i) {
        many.push_back(std::make_shared<PlainOperation>());
        queue.addNotificationOperation(many.back());
        EXPECT_EQ(many.back()->starts, 0) << "not inside the call";
    }
    memory_.dispatch.runReady();
    for (const auto& each : many)
        EXPECT_EQ(each->starts, 1) << "none waits for another";
    EXPECT_THAT(queue.queue().operations(), SizeIs(10));
    many[3]->finish();
    EXPECT_THAT(queue.queue().operations(), SizeIs(9));
    for (const auto& each : many)
        each->finish();
    EXPECT_THAT(queue.queue().operations(), IsEmpty());
}

}  // namespace
}  // namespace tavrolin::tests
