#pragma once

#include <atomic>

#include "tavrolin/foundation/operation_queue.h"

namespace tavrolin {

/// The base of the library's asynchronous operations: ready, then executing from `start`, then
/// finished from `finish`. A subclass's `start` calls this one first, then sets its work going, and
/// calls `finish` at the work's end. Cancelling sets the platform's flag, which nothing here asks
/// for: a cancelled operation still starts and still finishes. Threads: any.
class CVNPushOperation : public foundation::Operation {
public:
    void start() override;
    /// Does nothing unless the operation is executing.
    void finish();

    bool isReady() const override { return ready_; }
    bool isExecuting() const override { return executing_; }
    bool isFinished() const override { return finished_; }
    bool isAsynchronous() const override { return true; }

    // Observers hear of a change, before and after it.
    void setReady(bool ready);
    void setExecuting(bool executing);
    void setFinished(bool finished);

private:
    void change(std::atomic<bool>& flag, bool value, std::string_view key);

    std::atomic<bool> ready_ = true;
    std::atomic<bool> executing_ = false;
    std::atomic<bool> finished_ = false;
};

}  // namespace tavrolin
