#include "tavrolin/service_extension/notification_queue.h"

#include <utility>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

CVNNotificationQueue& CVNNotificationQueue::sharedInstance() {
    static auto* instance = new CVNNotificationQueue;
    return *instance;
}

CVNNotificationQueue::CVNNotificationQueue()
    : queue_([](platform::Block block) {
          platform::current().dispatch->asyncGlobal(platform::QueuePriority::normal,
                                                    std::move(block));
      }) {}

void CVNNotificationQueue::addNotificationOperation(
    std::shared_ptr<foundation::Operation> operation) {
    queue_.addOperation(std::move(operation));
}

}  // namespace tavrolin
