#pragma once

#include <cstddef>
#include <memory>

#include "tavrolin/platform/dispatch.h"

namespace tavrolin::adapters::memory {

/// Queues and a clock that a test moves. Every block, of the main queue and of the global ones,
/// runs in the order in which it was handed over, on the thread that calls one of the three run
/// operations; nothing runs outside them. The clock stands still unless it is moved:
///
///     MemoryDispatch dispatch;
///     … install it, call the code under test …
///     dispatch.runUntilIdle();  // all that the call set going is done, delays included
///
/// Threads: blocks, timers and holds may come from any thread; run from one thread.
class MemoryDispatch : public platform::Dispatch {
public:
    /// By default the clock stands at 2024-01-01T00:00:00 UTC.
    explicit MemoryDispatch(foundation::Date start = {1'704'067'200});
    ~MemoryDispatch() override;

    /// Runs blocks; when none is left, moves the clock to the next timer and goes on, until there
    /// is neither. While somebody else's hold is open (a transfer on a thread of its own) it waits
    /// for what comes of it, as long as the hold makes progress.
    void runUntilIdle();
    /// Runs the blocks that are queued and those that they queue. The clock stands still.
    void runReady();
    /// Runs what is ready, then lets this much time pass, with every timer that falls due in it run
    /// at its exact moment. Holds are not waited for.
    void advance(double seconds);

    /// Is a block queued or a timer waiting?
    bool hasWork() const;
    std::size_t openHolds() const;

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

}  // namespace tavrolin::adapters::memory
