#include "adapters/memory/memory_dispatch.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

namespace tavrolin {
namespace {

using adapters::memory::MemoryDispatch;
using platform::QueuePriority;
using testing::ElementsAre;

struct MemoryDispatchTest : testing::Test {
    MemoryDispatch dispatch{foundation::Date{1000}};
    std::vector<std::string> seen;

    platform::Block note(std::string what) {
        return [this, what] {
            seen.push_back(what + "@" +
                           std::to_string(static_cast<int>(dispatch.now().secondsSince1970)));
        };
    }
};

TEST_F(MemoryDispatchTest, RunsAllQueuesInTheOrderOfHandingOverAndNothingByItself) {
    dispatch.asyncGlobal(QueuePriority::background, note("global"));
    dispatch.asyncMain([this] {
        note("main")();
        dispatch.asyncMain(note("nested"));
    });
    dispatch.afterMain(0, note("at once"));
    EXPECT_TRUE(seen.empty());
    dispatch.runReady();
    EXPECT_THAT(seen, ElementsAre("global@1000", "main@1000", "at once@1000", "nested@1000"));
}

TEST_F(MemoryDispatchTest, MovesTheClockOnlyWhenNothingIsReadyAndThenToTheExactMoment) {
    dispatch.afterMain(5, note("late"));
    dispatch.afterMain(1, [this] {
        note("first")();
        dispatch.afterMain(2, note("from a timer"));
    });
    dispatch.afterMain(1, note("second"));
    dispatch.runReady();
    EXPECT_TRUE(seen.empty());
    EXPECT_TRUE(dispatch.hasWork());
    dispatch.runUntilIdle();
    EXPECT_THAT(seen, ElementsAre("first@1001", "second@1001", "from a timer@1003", "late@1005"));
    EXPECT_FALSE(dispatch.hasWork());
}

TEST_F(MemoryDispatchTest, AdvanceRunsWhatFallsDueAndNoMore) {
    dispatch.afterMain(1, [this] {
        note("one")();
        dispatch.afterMain(1, note("two"));
    });
    dispatch.afterMain(3, note("three"));
    dispatch.advance(2.5);
    EXPECT_THAT(seen, ElementsAre("one@1001", "two@1002"));
    EXPECT_EQ(dispatch.now(), foundation::Date{1002.5});
    dispatch.advance(0.5);
    EXPECT_EQ(seen.back(), "three@1003");
}

TEST_F(MemoryDispatchTest, WaitsForAHoldOfAnotherThreadBeforeItMovesTheClock) {
    dispatch.afterMain(30, note("timer"));
    std::thread worker([this, hold = dispatch.hold()]() mutable {
        dispatch.asyncMain(note("arrived"));
        hold.reset();
    });
    dispatch.runUntilIdle();
    worker.join();
    EXPECT_THAT(seen, ElementsAre("arrived@1000", "timer@1030"));
}

TEST_F(MemoryDispatchTest, AHoldThatStaysSilentKeepsNothingWaiting) {
    const auto hold = dispatch.hold();
    dispatch.afterMain(30, note("timer"));
    dispatch.runUntilIdle();  // a second of real time, by the port's contract
    EXPECT_THAT(seen, ElementsAre("timer@1030"));
}

}  // namespace
}  // namespace tavrolin
