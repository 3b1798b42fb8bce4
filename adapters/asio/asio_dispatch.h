#pragma once

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
    /// moment when no block is queued or running and no hold makes progress. Real time never moves
    /// it.
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
    /// waiting and no hold is open.
    void runMainUntilIdle();
    /// Ends the run after the block that runs now; without one, the next run ends at once.
    void stop();

    foundation::Date now() const override;
    void asyncMain(platform::Block block) override;
    void asyncGlobal(platform::QueuePriority priority, platform::Block block) override;
    void afterMain(double seconds, platform::Block block) override;
    std::unique_ptr<Hold> hold() override;

private:
    struct State;
    class OpenHold;

    std::shared_ptr<State> state_;
};

}  // namespace tavrolin::adapters::asio
