#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>

#include "tavrolin/core/version.h"
#include "tavrolin/foundation/error.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/application.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// The facade that the host app talks to. One instance, made on first use, which points the
/// preferences at the app group and hears of the app's life from then on. Threads: any, except
/// where an operation says otherwise; nothing here raises.
class Tavrolin {
public:
    static Tavrolin& sharedInstance();

    /// The main bundle's Info dictionary, read once.
    foundation::Value plistAppInfoDictionary();
    /// The app group's name; nil when there is none.
    foundation::Value appGroup() const;

    /// Starts the library: loads the store, handles a silent push among the launch options, and
    /// deletes what has expired. Returns before the store is loaded; once it is, a second call does
    /// nothing.
    void initSDKWithLaunchOptions(const foundation::Value& launchOptions);

    void registerForPushNotificationWithDefaultAuthorizationOptions();
    /// Option bits as the platform numbers them.
    void registerForPushNotificationWithAuthorizationOptions(std::uint64_t options);

    /// The token's bytes, as data.
    void didRegisterForRemoteNotificationsWithDeviceToken(const foundation::Value& token);
    void didFailToRegisterForRemoteNotificationsWithError(const foundation::Error& error);

    /// A silent push; loads the store first when that is needed. The completion is not called when
    /// the push is dropped on the way.
    void didReceiveRemoteNotification(
        const foundation::Value& payload,
        std::function<void(platform::BackgroundFetchResult)> withCompletionHandler);
    /// A notification that came while the app is in the foreground; how it is presented is the
    /// host's business.
    void willPresentForegroundNotification(const platform::DeliveredNotification& notification);
    /// What the user did with a notification.
    void didReceiveNotificationResponse(const platform::NotificationResponse& response);

    /// How many stored notifications are neither read nor dismissed. On the main thread.
    std::size_t getNotificationBadgeCount();

    /// Reports and stores a change of the user's opt-in; a value that is stored already is neither.
    void optPushNotification(bool optIn);
    bool hasOptedPushNotification();

    bool isNotificationFromCorvalen(const foundation::Value& payload);

    /// Lets the core SDK show its own prompt to a user who has not granted permission; once.
    void initiateNotificationDoubleOptIn();
    /// Shows it at once, initiated before or not.
    void showInstantNotificationDoubleOptIn();
    void resetNotificationDoubleOptIn();

    // The app's life, as its notifications call it; a host without such notifications calls these.
    void handleAppOnForeground();
    void handleAppOnBackground();
    void handleAppWhenActive();
    void handleAppWillTerminate();

private:
    Tavrolin();
    void configureSettingsWithInfoPlist(const foundation::Value& infoPlist);
    void addAppObserver();
    void handle(platform::LifecycleEvent event);
    void storeDidLoad(const foundation::Value& launchOptions);

    std::once_flag infoDictionaryRead_;
    foundation::Value plistAppInfoDictionary_;
};

}  // namespace tavrolin
