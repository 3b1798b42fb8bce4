#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "adapters/asio/asio_dispatch.h"

namespace tavrolin {
namespace {

using adapters::asio::AsioDispatch;
using adapters::asio::Clock;
using platform::QueuePriority;
using testing::ElementsAre;
using RealClock = std::chrono::steady_clock;

constexpr double kStart = 1'700'000'000;

double secondsSince(RealClock::time_point start) {
    return std::chrono::duration<double>(RealClock::now() - start).count();
}

/// Opens once, for any number of waiters.
class Gate {
public:
    void open() {
        const std::lock_guard lock(mutex_);
        isOpen_ = true;
        changed_.notify_all();
    }
    void wait() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isOpen_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOpen_ = false;
};

struct JumpingDispatch : testing::Test {
    AsioDispatch dispatch{Clock::jumping({kStart})};
    std::vector<std::string> seen;  // main queue only

    void note(const std::string& what) {
        seen.push_back(what + "@" + std::to_string(dispatch.now().secondsSince1970 - kStart));
    }
};

TEST_F(JumpingDispatch, StopLeavesTheClockWhereItIs) {
    dispatch.afterMain(60, [&] { note("minute"); });
    dispatch.afterMain(1, [&] { dispatch.stop(); });
    dispatch.runMain();
    dispatch.runMainUntilQuiet();
    note("stopped");
    dispatch.runMainUntilIdle();
    EXPECT_THAT(seen, ElementsAre("stopped@1.000000", "minute@60.000000"));
}

TEST_F(JumpingDispatch, KeepsLongDelaysExactlyWithoutWaitingForThem) {
    const auto start = RealClock::now();
    dispatch.afterMain(3600, [&] { note("hour"); });
    dispatch.afterMain(3, [&] {
        note("first");
        dispatch.afterMain(0.5, [&] { note("nested"); });
        dispatch.afterMain(0, [&] { note("at once"); });
    });
    dispatch.afterMain(3, [&] { note("second"); });
    EXPECT_EQ(dispatch.now(), foundation::Date{kStart}) << "not before the main queue runs";
    dispatch.runMainUntilIdle();
    EXPECT_THAT(seen, ElementsAre("first@3.000000", "second@3.000000", "at once@3.000000",
                                  "nested@3.500000", "hour@3600.000000"));
    EXPECT_LT(secondsSince(start), 2.0);
}

TEST_F(JumpingDispatch, StandsStillWhileAGlobalBlockRuns) {
    Gate timerAskedFor;
    double seenByBlock = -1;
    dispatch.asyncGlobal(QueuePriority::high, [&] {
        timerAskedFor.wait();
        seenByBlock = dispatch.now().secondsSince1970 - kStart;
    });
    dispatch.asyncMain([&] {
        dispatch.afterMain(10, [] {});
        dispatch.asyncMain([&] { timerAskedFor.open(); });
    });
    dispatch.runMainUntilIdle();
    EXPECT_EQ(seenByBlock, 0);
    EXPECT_EQ(dispatch.now(), foundation::Date{kStart + 10});
}

TEST_F(JumpingDispatch, WaitsForAHoldAndForWhatItHandsOver) {
    dispatch.afterMain(30, [&] { note("time-out"); });
    auto hold = dispatch.hold();
    std::thread transfer([&] {
        hold->progress();
        dispatch.asyncGlobal(QueuePriority::normal,
                             [&] { dispatch.asyncMain([&] { note("arrived"); }); });
        hold.reset();
    });
    dispatch.runMainUntilIdle();
    transfer.join();
    EXPECT_THAT(seen, ElementsAre("arrived@0.000000", "time-out@30.000000"));
}

TEST_F(JumpingDispatch, LetsTimePassOnceAHoldWasSilentForASecond) {
    const auto start = RealClock::now();
    auto hold = dispatch.hold();
    dispatch.afterMain(30, [&] {
        note("time-out");
        hold.reset();
    });
    dispatch.runMainUntilIdle();
    EXPECT_THAT(seen, ElementsAre("time-out@30.000000"));
    EXPECT_GE(secondsSince(start), 0.99);
}

TEST_F(JumpingDispatch, TakesShortDelaysAlongUntilItIsQuietAndLeavesTheOthers) {
    dispatch.afterMain(0.05, [&] {
        note("short");
        dispatch.afterMain(0.09, [&] { note("chained"); });
    });
    dispatch.afterMain(1, [&] { note("long"); });
    dispatch.runMainUntilQuiet(0.1, 1);
    EXPECT_THAT(seen, ElementsAre("short@0.050000", "chained@0.140000"));

    // One that sets itself again and again holds nobody up for ever.
    std::function<void()> tick = [&] { dispatch.afterMain(0.03, tick); };
    tick();
    dispatch.runMainUntilQuiet(0.1, 0.5);
    EXPECT_NEAR(dispatch.now().secondsSince1970 - kStart, 0.64, 0.031);
}

TEST(RealDispatch, MeasuresDelaysInRealTimeAndMovesTheDateByTheOffset) {
    AsioDispatch dispatch(Clock::real(-1000));
    const auto start = RealClock::now();
    std::vector<int> order;
    dispatch.afterMain(0.04, [&] { order.push_back(3); });
    dispatch.afterMain(0.02, [&] { order.push_back(2); });
    dispatch.afterMain(-1, [&] { order.push_back(1); });
    dispatch.runMainUntilIdle();
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
    EXPECT_GE(secondsSince(start), 0.04);
    const double wall =
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_NEAR(dispatch.now().secondsSince1970, wall - 1000, 5);
}

TEST(RealDispatch, RunsMainBlocksInOrderOnTheCallersThreadAndGlobalOnesElsewhere) {
    AsioDispatch dispatch(Clock::real());
    const auto caller = std::this_thread::get_id();
    std::vector<int> order;
    for (int i = 0; i < 100; ++i) {
        dispatch.asyncGlobal(static_cast<QueuePriority>(i % 4), [&, caller] {
            EXPECT_NE(std::this_thread::get_id(), caller);
            dispatch.asyncMain([caller] { EXPECT_EQ(std::this_thread::get_id(), caller); });
        });
        dispatch.asyncMain([&order, i] { order.push_back(i); });
    }
    dispatch.runMainUntilIdle();
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(RealDispatch, TakesWaitingGlobalBlocksByPriority) {
    AsioDispatch dispatch(Clock::real());
    Gate queued;
    std::mutex mutex;
    std::vector<int> order;
    constexpr int kThreads = 4;
    for (int i = 0; i < kThreads; ++i) {
        dispatch.asyncGlobal(QueuePriority::high, [&] { queued.wait(); });
    }
    // The others wait until the end, so that one thread takes what is queued, in its order.
    Gate done;
    for (int i = 0; i < kThreads - 1; ++i) {
        dispatch.asyncGlobal(QueuePriority::high, [&] { done.wait(); });
    }
    for (const int priority : {3, 2, 1, 0}) {
        dispatch.asyncGlobal(static_cast<QueuePriority>(priority), [&, priority] {
            const std::lock_guard lock(mutex);
            order.push_back(priority);
            if (order.size() == 4) done.open();
        });
    }
    queued.open();
    dispatch.runMainUntilIdle();
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3));
}

TEST(RealDispatch, StopEndsTheRunAndLeavesTheRestForTheNext) {
    AsioDispatch dispatch(Clock::real());
    int ran = 0;
    dispatch.asyncMain([&] {
        ++ran;
        dispatch.stop();
    });
    dispatch.asyncMain([&] { ++ran; });
    dispatch.runMain();
    EXPECT_EQ(ran, 1);
    dispatch.stop();  // asked for in advance
    dispatch.runMain();
    dispatch.runMainUntilIdle();
    EXPECT_EQ(ran, 2);
}

TEST(RealDispatch, DropsWhatNeverRanWhenItEndsAlthoughItOwnsHolds) {
    auto witness = std::make_shared<int>(0);
    {
        AsioDispatch dispatch(Clock::real());
        std::shared_ptr<platform::Dispatch::Hold> hold = dispatch.hold();
        dispatch.afterMain(60, [hold, witness] {});
        dispatch.asyncMain([hold, witness] {});
    }
    EXPECT_EQ(witness.use_count(), 1);
}

TEST(DispatchDeathTest, AnExceptionThatLeavesABlockEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto fail = [] { throw std::runtime_error("lost"); };
    EXPECT_DEATH(
        {
            AsioDispatch dispatch(Clock::real());
            dispatch.asyncMain(fail);
            try {
                dispatch.runMain();
            } catch (...) {
            }
        },
        "lost");
    EXPECT_DEATH(
        {
            AsioDispatch dispatch(Clock::real());
            dispatch.asyncGlobal(QueuePriority::low, fail);
            dispatch.runMain();
        },
        "lost");
}

}  // namespace
}  // namespace tavrolin
