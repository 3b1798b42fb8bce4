#include "tavrolin/network/network_queue.h"

#include <utility>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

CVNPushNetworkQueue::CVNPushNetworkQueue()
    : queue_([](std::function<void()> block) {
          platform::current().dispatch->asyncGlobal(platform::QueuePriority::normal,
                                                    std::move(block));
      }) {}

CVNPushNetworkQueue& CVNPushNetworkQueue::sharedInstance() {
    static auto* instance = new CVNPushNetworkQueue;
    return *instance;
}

void CVNPushNetworkQueue::addOperation(std::shared_ptr<foundation::Operation> operation) {
    queue_.addOperation(std::move(operation));
}

}  // namespace tavrolin
