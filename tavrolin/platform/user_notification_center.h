#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/attachments.h"

namespace tavrolin::platform {

/// What a notification shows. Texts are strings or nil.
struct NotificationContent {
    foundation::Value title;
    foundation::Value subtitle;
    foundation::Value body;
    foundation::Value categoryIdentifier;
    foundation::Value sound;  // the sound's name
    std::vector<Attachment> attachments;
    foundation::Value userInfo;  // a dictionary
};

struct NotificationRequest {
    std::string identifier;
    NotificationContent content;
};

/// A notification that lies on the tray.
struct DeliveredNotification {
    NotificationRequest request;
    foundation::Date date;
};

/// 0 not determined, 1 denied, 2 authorised, 3 provisional, 4 ephemeral.
using AuthorizationStatus = std::int64_t;

/// The system's notification center, as this app sees it. Threads: any; completions run on a queue
/// of the center's own, each exactly once.
class UserNotificationCenter {
public:
    virtual ~UserNotificationCenter() = default;

    virtual void getAuthorizationStatus(std::function<void(AuthorizationStatus)> completion) = 0;
    /// Oldest first.
    virtual void getDeliveredNotifications(
        std::function<void(std::vector<DeliveredNotification>)> completion) = 0;
    /// Identifiers that are not on the tray are passed over.
    virtual void removeDeliveredNotifications(std::vector<std::string> identifiers) = 0;
};

class ForwardingUserNotificationCenter : public UserNotificationCenter {
public:
    explicit ForwardingUserNotificationCenter(UserNotificationCenter& target) : target_(target) {}
    void getAuthorizationStatus(std::function<void(AuthorizationStatus)> completion) override {
        target_.getAuthorizationStatus(std::move(completion));
    }
    void getDeliveredNotifications(
        std::function<void(std::vector<DeliveredNotification>)> completion) override {
        target_.getDeliveredNotifications(std::move(completion));
    }
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override {
        target_.removeDeliveredNotifications(std::move(identifiers));
    }

private:
    UserNotificationCenter& target_;
};

}  // namespace tavrolin::platform
