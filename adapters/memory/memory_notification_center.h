#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::adapters::memory {

/// A tray and a permission that a test sets. Completions run on the dispatch's global queue.
/// Threads: any.
class MemoryNotificationCenter final : public platform::UserNotificationCenter {
public:
    /// The dispatch must outlive the center.
    explicit MemoryNotificationCenter(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

    /// 0, not determined, at the start.
    void setAuthorizationStatus(platform::AuthorizationStatus status);
    /// Puts the request on the tray, with the clock's time; one of the same identifier goes.
    void deliver(platform::NotificationRequest request);
    std::vector<platform::DeliveredNotification> delivered() const;

    void getAuthorizationStatus(
        std::function<void(platform::AuthorizationStatus)> completion) override;
    void getDeliveredNotifications(
        std::function<void(std::vector<platform::DeliveredNotification>)> completion) override;
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override;

private:
    platform::Dispatch& dispatch_;
    mutable std::mutex mutex_;
    platform::AuthorizationStatus status_ = 0;
    std::vector<platform::DeliveredNotification> delivered_;
};

}  // namespace tavrolin::adapters::memory
