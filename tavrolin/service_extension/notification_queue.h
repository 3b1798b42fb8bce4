#pragma once

#include <memory>

#include "tavrolin/foundation/operation_queue.h"

namespace tavrolin {

/// The process-wide queue of notification operations. Threads: any.
class CVNNotificationQueue {
public:
    static CVNNotificationQueue& sharedInstance();

    foundation::OperationQueue& queue() { return queue_; }
    void addNotificationOperation(std::shared_ptr<foundation::Operation> operation);

private:
    CVNNotificationQueue();

    foundation::OperationQueue queue_;
};

}  // namespace tavrolin
