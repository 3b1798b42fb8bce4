#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "device/attachment_storage.h"
#include "device/system_state.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/json_text.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

// The system's settings, as they are kept.
inline constexpr std::string_view kSettingPermission = "permission";  // an AuthorizationStatus
inline constexpr std::string_view kSettingCategories = "categories";  // as they are printed
inline constexpr std::string_view kSettingBadge = "badge";            // a number

/// The permission as it is kept; not determined on a device on which nobody was asked yet.
platform::AuthorizationStatus permissionOf(SystemState& state);

/// The notification center over what the device's system keeps. Completions run on a global queue.
/// What can't be read is empty to the app, what can't be written an error where there is one to
/// give; either way the log says why.
class SystemNotificationCenter : public platform::UserNotificationCenter {
public:
    /// `ownFiles`: the folder of this process's downloads, from which attachments are taken.
    /// `didRemove` hears of what was really taken off the tray.
    SystemNotificationCenter(SystemState& state, platform::Dispatch& dispatch,
                             platform::JSONText& json, AttachmentStorage storage,
                             std::string ownFiles,
                             std::function<void(const std::vector<std::string>&)> didRemove);

    void getAuthorizationStatus(
        std::function<void(platform::AuthorizationStatus)> completion) override;
    /// The user agrees when asked.
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
    std::vector<platform::DeliveredNotification> delivered();
    void add(platform::NotificationRequest request);
    void removeFiles(const std::string& content);

    SystemState& state_;
    platform::Dispatch& dispatch_;
    platform::JSONText& json_;
    AttachmentStorage storage_;
    std::string ownFiles_;
    std::function<void(const std::vector<std::string>&)> didRemove_;
};

}  // namespace tavrolin::device
