#pragma once

#include <cstdint>
#include <memory>

#include "tavrolin/platform/dispatch.h"

namespace tavrolin::adapters::asio {

/// Which time a dispatch lives in.
class Clock {
public:
    /// The machine's time moved by `offset` seconds. Delays are measured on the monotonic clock, so
    /// setting the machine's time doesn't disturb them.
    static Clock real(double offset = 0) { return Clock(false, offset); }
    /// A time of its own: it stands still while anything runs and moves to the next timer's exact
    /// moment when no block is queued or running and no hold makes progress, or none that is
    /// younger than 30 seconds of real time. Real time never moves it.
    static Clock jumping(foundation::Date start) { return Clock(true, start.secondsSince1970); }

    bool isJumping() const { return isJumping_; }
    double seconds() const { return seconds_; }  // the offset, or the start

private:
    Clock(bool isJumping, double seconds) : isJumping_(isJumping), seconds_(seconds) {}

    bool isJumping_;
    double seconds_;
};

/// The queues of a process. The main queue's blocks run on the thread that calls one of the run
/// operations, and only while it does; the global queues share a few threads, which are started
/// when there is work for them, and of the blocks that wait the one of the highest priority is the
/// next.
///
/// A jumping clock moves only while the main queue runs: whatever the main thread does before it
/// counts as work under way.
///
/// Threads: any, but for the run operations, which belong to one thread and don't nest. The
/// destructor waits for the blocks that run and drops the others; it must not be called from one.
class AsioDispatch : public platform::Dispatch {
public:
    explicit AsioDispatch(Clock clock);
    ~AsioDispatch() override;

    /// Runs the main queue until `stop` is called.
    void runMain();
    /// The same, but also returns once no block is queued or running on any queue, no timer is
    /// waiting, no hold is open and no work is pending.
    void runMainUntilIdle();
    /// The same, but returns as soon as no block is queued or running on any queue: timers go on
    /// waiting, and no clock jumps.
    void runMainUntilQuiet();
    /// The same, but takes along the timers that fall due within `horizon` seconds of the present
    /// moment, whatever sets them, for `atMost` seconds in all.
    void runMainUntilQuiet(double horizon, double atMost);
    /// Ends the run after the block that runs now; without one, the next run ends at once.
    void stop();

    foundation::Date now() const override;
    void asyncMain(platform::Block block) override;
    void asyncGlobal(platform::QueuePriority priority, platform::Block block) override;
    void afterMain(double seconds, platform::Block block) override;
    std::unique_ptr<Hold> hold() override;
    std::int64_t secondsFromGMT(foundation::Date date) const override;

    /// As `afterMain`, but nothing waits for it: it neither keeps a run going nor draws a jumping
    /// clock on. It fires when the clock gets there on another's account, or when nothing is left
    /// but what may never end: silent transfers and `Pending` work.
    void deadlineMain(double seconds, platform::Block block);

    /// Work whose end the queues can't see, until its destruction: it keeps a run going and doesn't
    /// hold the clock.
    class Pending {
    public:
        virtual ~Pending() = default;
    };
    std::unique_ptr<Pending> pending();

    /// Grows with every block that runs and every progress of a hold, so that a watcher can tell
    /// slow from stuck.
    std::uint64_t activity() const;

private:
    struct State;
    class OpenHold;
    class OpenPending;

    std::shared_ptr<State> state_;
};

}  // namespace tavrolin::adapters::asio
