#pragma once

#include <functional>
#include <string>
#include <vector>

#include "device/system_state.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/json_text.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

/// The notification center over the device's tray. Completions run on a global queue. A tray that
/// can't be read is empty to the app, and the log says why.
class TrayCenter : public platform::UserNotificationCenter {
public:
    /// `didRemove` hears of what was really taken off the tray.
    TrayCenter(SystemState& state, platform::Dispatch& dispatch, platform::JSONText& json,
               std::function<void(const std::vector<std::string>&)> didRemove);

    /// A device on which nobody was asked yet has not determined anything.
    void getAuthorizationStatus(
        std::function<void(platform::AuthorizationStatus)> completion) override;
    void getDeliveredNotifications(
        std::function<void(std::vector<platform::DeliveredNotification>)> completion) override;
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override;
    void requestAuthorization(std::uint64_t options,
                              std::function<void(bool, foundation::Failure)> completion) override;
    void setNotificationCategories(std::vector<platform::NotificationCategory> categories) override;
    void addNotificationRequest(platform::NotificationRequest request,
                                std::function<void(foundation::Failure)> completion) override;
    void getPendingNotificationIdentifiers(
        std::function<void(std::vector<std::string>)> completion) override;

private:
    std::vector<platform::DeliveredNotification> delivered();

    SystemState& state_;
    platform::Dispatch& dispatch_;
    platform::JSONText& json_;
    std::function<void(const std::vector<std::string>&)> didRemove_;
};

}  // namespace tavrolin::device
