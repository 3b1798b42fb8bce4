#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::adapters::memory {

/// A tray, what is pending, and a permission that a test sets. A pending request is on the tray
/// once the dispatch's clock has passed its moment, but no clock jumps for its sake. Completions
/// run on the dispatch's global queue. Threads: any.
class MemoryNotificationCenter final : public platform::UserNotificationCenter {
public:
    /// The dispatch must outlive the center.
    explicit MemoryNotificationCenter(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

    /// 0, not determined, at the start.
    void setAuthorizationStatus(platform::AuthorizationStatus status);
    /// Puts the request on the tray, with the clock's time; one of the same identifier goes.
    void deliver(platform::NotificationRequest request);
    std::vector<platform::DeliveredNotification> delivered();
    /// Soonest first.
    std::vector<platform::NotificationRequest> pending();
    std::vector<platform::NotificationCategory> categories() const;
    /// How the user answers when asked (yes, at the start), or why nobody can be asked.
    void setAnswer(bool grants, foundation::Failure failure = std::nullopt);
    /// With what options the app asked for permission, each time.
    std::vector<std::uint64_t> authorizationRequests() const;
    /// Why requests can't be added; nothing, at the start, when they can.
    void setAddFailure(foundation::Failure failure);

    void getAuthorizationStatus(
        std::function<void(platform::AuthorizationStatus)> completion) override;
    void requestAuthorization(std::uint64_t options,
                              std::function<void(bool, foundation::Failure)> completion) override;
    void setNotificationCategories(std::vector<platform::NotificationCategory> categories) override;
    void getDeliveredNotifications(
        std::function<void(std::vector<platform::DeliveredNotification>)> completion) override;
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override;
    void addNotificationRequest(platform::NotificationRequest request,
                                std::function<void(foundation::Failure)> completion) override;
    void getPendingNotificationIdentifiers(
        std::function<void(std::vector<std::string>)> completion) override;

private:
    struct Pending {
        double fireAt;
        platform::NotificationRequest request;
    };
    void fireDue();
    void put(platform::NotificationRequest request, foundation::Date date);

    platform::Dispatch& dispatch_;
    mutable std::mutex mutex_;
    platform::AuthorizationStatus status_ = 0;
    bool userGrants_ = true;
    foundation::Failure askFailure_;
    foundation::Failure addFailure_;
    std::vector<std::uint64_t> authorizationRequests_;
    std::vector<platform::NotificationCategory> categories_;
    std::vector<Pending> pending_;  // soonest first
    std::vector<platform::DeliveredNotification> delivered_;
};

}  // namespace tavrolin::adapters::memory
