#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "device/system_state.h"
#include "tavrolin/platform/extension_context.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

/// What the extension asked of the system, in order: "open", "close", "remove". Main thread.
using ExtensionRequests = std::vector<std::string>;

/// The system as the extension sees it. It opens no app and closes no view: that is told to whoever
/// expanded it.
class SystemExtensionContext : public platform::ExtensionContext {
public:
    SystemExtensionContext(ExtensionRequests& requests,
                           std::vector<platform::NotificationAction> actions)
        : requests_(requests), actions_(std::move(actions)) {}

    void performNotificationDefaultAction() override { requests_.emplace_back("open"); }
    void dismissNotificationContentExtension() override { requests_.emplace_back("close"); }
    std::vector<platform::NotificationAction> notificationActions() override { return actions_; }
    void setNotificationActions(std::vector<platform::NotificationAction> actions) override {
        actions_ = std::move(actions);
    }

private:
    ExtensionRequests& requests_;
    std::vector<platform::NotificationAction> actions_;
};

/// The notification center, which tells when the expanded notification is removed. Its files stay
/// for as long as they are shown.
class ExpandedNotificationCenter : public platform::ForwardingUserNotificationCenter {
public:
    ExpandedNotificationCenter(platform::UserNotificationCenter& target, SystemState& state,
                               std::string identifier, ExtensionRequests& requests,
                               std::function<void()> didRemove)
        : ForwardingUserNotificationCenter(target),
          state_(state),
          identifier_(std::move(identifier)),
          requests_(requests),
          didRemove_(std::move(didRemove)) {}

    void removeDeliveredNotifications(std::vector<std::string> identifiers) override;

private:
    SystemState& state_;
    std::string identifier_;
    ExtensionRequests& requests_;
    std::function<void()> didRemove_;
};

}  // namespace tavrolin::device
