#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/expected.h"
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

/// Lets a local request fire once, so many seconds after it was added.
class TimeIntervalTrigger {
public:
    /// Raises `foundation::Exception` for an interval that is not above 0.
    static TimeIntervalTrigger withTimeInterval(double seconds);

    double timeInterval() const { return timeInterval_; }

private:
    explicit TimeIntervalTrigger(double seconds) : timeInterval_(seconds) {}
    double timeInterval_;
};

struct NotificationRequest {
    std::string identifier;
    NotificationContent content;
    std::optional<TimeIntervalTrigger> trigger = std::nullopt;  // none: at once, as for a push
};

/// A notification that lies on the tray.
struct DeliveredNotification {
    NotificationRequest request;
    foundation::Date date;
};

/// The action identifier of a notification that was opened itself.
inline constexpr std::string_view kDefaultActionIdentifier =
    "UNNotificationDefaultActionIdentifier";
/// The action identifier of a notification that was dismissed.
inline constexpr std::string_view kDismissActionIdentifier =
    "UNNotificationDismissActionIdentifier";

/// What a user did with a notification.
struct NotificationResponse {
    /// One of the two above, or an action of the notification's category.
    std::string actionIdentifier;
    DeliveredNotification notification;
    /// What was typed, for a text-input action.
    std::optional<std::string> userText = std::nullopt;
};

// The bits of an action's options.
inline constexpr std::uint64_t kActionAuthenticationRequired = 1;
inline constexpr std::uint64_t kActionDestructive = 2;
inline constexpr std::uint64_t kActionForeground = 4;  // pressing it opens the app

/// A button of a category's menu.
struct NotificationAction {
    /// What makes an action one that takes text.
    struct TextInput {
        std::string buttonTitle;
        std::string placeholder;
        bool operator==(const TextInput&) const = default;
    };

    std::string identifier;
    std::string title;
    std::uint64_t options = 0;
    std::optional<TextInput> textInput = std::nullopt;

    bool operator==(const NotificationAction&) const = default;
};

/// The menu of the notifications that name this category.
struct NotificationCategory {
    std::string identifier;
    std::vector<NotificationAction> actions;

    bool operator==(const NotificationCategory&) const = default;
};

/// 0 not determined, 1 denied, 2 authorised, 3 provisional, 4 ephemeral.
using AuthorizationStatus = std::int64_t;

/// The system's notification center, as this app sees it. Threads: any; completions run on a queue
/// of the center's own, each exactly once, and may be empty where a failure is the only answer.
class UserNotificationCenter {
public:
    virtual ~UserNotificationCenter() = default;

    virtual void getAuthorizationStatus(std::function<void(AuthorizationStatus)> completion) = 0;
    /// Asks the user, who is asked once at most; afterwards tells what was decided. Option bits as
    /// the system numbers them.
    virtual void requestAuthorization(
        std::uint64_t options,
        std::function<void(bool granted, foundation::Failure)> completion) = 0;
    /// Replaces all categories of the app. Of several with one identifier the last counts.
    virtual void setNotificationCategories(std::vector<NotificationCategory> categories) = 0;

    /// Oldest first.
    virtual void getDeliveredNotifications(
        std::function<void(std::vector<DeliveredNotification>)> completion) = 0;
    /// Identifiers that are not on the tray are passed over.
    virtual void removeDeliveredNotifications(std::vector<std::string> identifiers) = 0;

    /// Replaces a pending request of the same identifier. The system may drop those that fire last
    /// when it holds as many as it takes.
    virtual void addNotificationRequest(NotificationRequest request,
                                        std::function<void(foundation::Failure)> completion) = 0;
    /// Only the identifiers of what waits, soonest first.
    virtual void getPendingNotificationIdentifiers(
        std::function<void(std::vector<std::string>)> completion) = 0;
};

class ForwardingUserNotificationCenter : public UserNotificationCenter {
public:
    explicit ForwardingUserNotificationCenter(UserNotificationCenter& target) : target_(target) {}
    void getAuthorizationStatus(std::function<void(AuthorizationStatus)> completion) override {
        target_.getAuthorizationStatus(std::move(completion));
    }
    void requestAuthorization(std::uint64_t options,
                              std::function<void(bool, foundation::Failure)> completion) override {
        target_.requestAuthorization(options, std::move(completion));
    }
    void setNotificationCategories(std::vector<NotificationCategory> categories) override {
        target_.setNotificationCategories(std::move(categories));
    }
    void getDeliveredNotifications(
        std::function<void(std::vector<DeliveredNotification>)> completion) override {
        target_.getDeliveredNotifications(std::move(completion));
    }
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override {
        target_.removeDeliveredNotifications(std::move(identifiers));
    }
    void addNotificationRequest(NotificationRequest request,
                                std::function<void(foundation::Failure)> completion) override {
        target_.addNotificationRequest(std::move(request), std::move(completion));
    }
    void getPendingNotificationIdentifiers(
        std::function<void(std::vector<std::string>)> completion) override {
        target_.getPendingNotificationIdentifiers(std::move(completion));
    }

private:
    UserNotificationCenter& target_;
};

}  // namespace tavrolin::platform
