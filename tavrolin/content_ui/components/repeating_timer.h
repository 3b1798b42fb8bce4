#pragma once

#include <functional>
#include <memory>

namespace tavrolin {

/// Calls a block again and again on the main queue, until it is stopped, started anew or gone. The
/// block may do any of it. Main thread.
class RepeatingTimer {
public:
    RepeatingTimer() = default;
    ~RepeatingTimer() { stop(); }
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;

    /// `interval` in seconds, above 0; the first call comes after one of them.
    void start(double interval, std::function<void()> block);
    void stop();
    bool isRunning() const { return run_ != nullptr; }

private:
    struct Run;
    static void schedule(const std::shared_ptr<Run>& run);

    std::shared_ptr<Run> run_;
};

}  // namespace tavrolin
