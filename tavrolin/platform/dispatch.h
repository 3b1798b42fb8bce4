#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "tavrolin/foundation/date.h"

namespace tavrolin::platform {

using Block = std::function<void()>;

enum class QueuePriority { high, normal, low, background };

/// Queues and the clock. Nothing in the library sleeps or reads another clock.
///
/// Threads: every operation may be called on any thread, also from a block. Blocks are never run
/// inside the call that hands them over. Blocks of the main queue run one at a time, in order, on
/// the thread that the embedding process made the main one; blocks of a global queue run at once.
/// An exception that leaves a block ends the process, as the platform does.
class Dispatch {
public:
    /// Work outside the queues that a jumping clock must wait for, such as a transfer. It holds the
    /// clock while it makes progress: when `progress` has not been called for one second of real
    /// time, time may pass again. Ends with its destruction.
    class Hold {
    public:
        virtual ~Hold() = default;
        virtual void progress() = 0;
    };

    virtual ~Dispatch() = default;

    /// The clock's time: the real one, or one that jumps on to the next timer whenever no block is
    /// queued or running and nothing holds it.
    virtual foundation::Date now() const = 0;

    virtual void asyncMain(Block block) = 0;
    virtual void asyncGlobal(QueuePriority priority, Block block) = 0;
    /// Puts the block on the main queue after exactly `seconds` of the clock (0 when negative).
    /// Timers that fall due at the same moment run in the order in which they were asked for.
    virtual void afterMain(double seconds, Block block) = 0;

    virtual std::unique_ptr<Hold> hold() = 0;

    /// How far the device's time zone is ahead of UTC at that moment, in seconds.
    virtual std::int64_t secondsFromGMT(foundation::Date) const { return 0; }
};

/// Passes everything on; for a test that replaces one operation.
class ForwardingDispatch : public Dispatch {
public:
    explicit ForwardingDispatch(Dispatch& target) : target_(target) {}
    foundation::Date now() const override { return target_.now(); }
    void asyncMain(Block block) override { target_.asyncMain(std::move(block)); }
    void asyncGlobal(QueuePriority priority, Block block) override {
        target_.asyncGlobal(priority, std::move(block));
    }
    void afterMain(double seconds, Block block) override {
        target_.afterMain(seconds, std::move(block));
    }
    std::unique_ptr<Hold> hold() override { return target_.hold(); }
    std::int64_t secondsFromGMT(foundation::Date date) const override {
        return target_.secondsFromGMT(date);
    }

private:
    Dispatch& target_;
};

}  // namespace tavrolin::platform
