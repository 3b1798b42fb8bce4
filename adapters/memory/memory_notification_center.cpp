#include "adapters/memory/memory_notification_center.h"

#include <algorithm>

namespace tavrolin::adapters::memory {

using platform::DeliveredNotification;
using platform::QueuePriority;

void MemoryNotificationCenter::setAuthorizationStatus(platform::AuthorizationStatus status) {
    const std::lock_guard lock(mutex_);
    status_ = status;
}

void MemoryNotificationCenter::deliver(platform::NotificationRequest request) {
    removeDeliveredNotifications({request.identifier});
    const std::lock_guard lock(mutex_);
    delivered_.push_back({std::move(request), dispatch_.now()});
}

std::vector<DeliveredNotification> MemoryNotificationCenter::delivered() const {
    const std::lock_guard lock(mutex_);
    return delivered_;
}

void MemoryNotificationCenter::getAuthorizationStatus(
    std::function<void(platform::AuthorizationStatus)> completion) {
    const std::lock_guard lock(mutex_);
    dispatch_.asyncGlobal(QueuePriority::normal, [completion = std::move(completion),
                                                  status = status_] { completion(status); });
}

void MemoryNotificationCenter::getDeliveredNotifications(
    std::function<void(std::vector<DeliveredNotification>)> completion) {
    dispatch_.asyncGlobal(QueuePriority::normal, [completion = std::move(completion),
                                                  tray = delivered()] { completion(tray); });
}

void MemoryNotificationCenter::removeDeliveredNotifications(std::vector<std::string> identifiers) {
    const std::lock_guard lock(mutex_);
    std::erase_if(delivered_, [&](const DeliveredNotification& each) {
        return std::find(identifiers.begin(), identifiers.end(), each.request.identifier) !=
               identifiers.end();
    });
}

}  // namespace tavrolin::adapters::memory
