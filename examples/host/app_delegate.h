#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

#include "core_sdk.h"
#include "tavrolin/foundation/error.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/application.h"
#include "tavrolin/platform/user_notification_center.h"

namespace host {

inline constexpr std::string_view kAppGroup = "group.com.example.host";

/// What the system and the user do to the app, handed on to the library. Everything is called on
/// the main thread. Lives as long as the process.
class AppDelegate {
public:
    using FetchCompletion = std::function<void(tavrolin::platform::BackgroundFetchResult)>;

    AppDelegate();

    /// The first thing that is called.
    void didFinishLaunching(const Value& launchOptions);

    /// The user wants to be kept up to date.
    void askForPermission();
    /// The user said no to that once; the core SDK may ask again in its own way.
    void offerNotificationsAgain();
    void didRegisterForRemoteNotifications(const Value& deviceToken);
    void didFailToRegisterForRemoteNotifications(const tavrolin::foundation::Error& error);

    /// How a notification that comes while the app is in the foreground is shown: here, as a banner
    /// or not.
    bool willPresent(const tavrolin::platform::DeliveredNotification& notification);
    void didReceive(const tavrolin::platform::NotificationResponse& response);
    /// A silent push. The completion is called once, within 25 seconds.
    void didReceiveRemoteNotification(const Value& payload, const FetchCompletion& completion);

    void openURL(const tavrolin::foundation::URL& url);
    void continueUserActivity(const tavrolin::platform::UserActivity& activity);

    /// The switch in the app's own settings.
    void setWantsNews(bool wants);
    std::size_t badge();

private:
    void show(const Value& link, const Value& payload);

    const std::shared_ptr<CoreSDK> coreSDK_;
};

}  // namespace host
