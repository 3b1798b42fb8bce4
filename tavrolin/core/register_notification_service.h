#pragma once

#include <cstdint>
#include <functional>

#include "tavrolin/foundation/error.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// Asks for permission, registers for remote notifications, keeps the device token, and reports
/// changes of either to the core SDK, which decides whether they are to be sent. Nothing raises.
/// Threads: any.
class CVNRegisterNotficationService {
public:
    /// Option bits as the platform numbers them. Asks on the main queue. When the user was asked,
    /// granted or not, the app registers for remote notifications.
    static void registerForPushWithRequestAuthorizationWithOptions(std::uint64_t options);
    /// Runs the callback asynchronously on the main queue.
    static void dispatchToMainQueue(std::function<void()> callback);
    /// On the main queue.
    static void registerForRemoteNotifications();

    /// Bytes, as data. A changed token is always stored and reported; a first or an unchanged one
    /// only when the core SDK asks for it. Nothing happens without bytes.
    static void didRegisterForRemoteNotificationsWithDeviceToken(const foundation::Value& token);
    /// Two lower-case hexadecimal digits a byte; nil without bytes.
    static foundation::Value getDeviceTokenFromData(const foundation::Value& token);
    static void didFailToRegisterForRemoteNotificationsWithError(const foundation::Error& error);

    /// Evaluates the permission once the user has decided, starts a double opt-in that was
    /// initiated when it is due, and tells the callback (which may be empty) whether notifications
    /// are granted: whatever is neither undecided nor denied. Runs in the notification center's
    /// completion.
    static void getCurrentNotificationSettingsWithCompletionHandler(
        std::function<void(bool granted)> completion);
    /// Records the permission when it is new or changed, or when the core SDK asks for it again.
    static void evaluateAndRecordPushNotificationPermission(bool granted);
    static void recordPushNotificationPermission(bool granted);

    /// Registers the carousel categories and the app's own, in place of any others.
    static void setUserActionCategoriesForNotification();
};

}  // namespace tavrolin
