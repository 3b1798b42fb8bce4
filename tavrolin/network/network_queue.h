#pragma once

#include <memory>

#include "tavrolin/foundation/operation_queue.h"

namespace tavrolin {

/// The process-wide queue of media downloads. Their order is not kept. Threads: any.
class CVNPushNetworkQueue {
public:
    static CVNPushNetworkQueue& sharedInstance();

    void addOperation(std::shared_ptr<foundation::Operation> operation);
    foundation::OperationQueue& queue() { return queue_; }

private:
    CVNPushNetworkQueue();

    foundation::OperationQueue queue_;
};

}  // namespace tavrolin
