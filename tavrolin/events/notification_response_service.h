#pragma once

#include "tavrolin/events/notification_response_handler.h"

namespace tavrolin {

/// The name of the notice that a notification of this system came while the app was in the
/// foreground; its user info is the payload's dictionary form. Posted on the default center,
/// `foundation::NotificationCenter`.
inline constexpr std::string_view kCorvalenNotificationReceived = "CorvalenNotificationReceived";

/// Where the facade hands in what the user and the system did. Nothing raises. On the thread of the
/// caller.
class CVNNotificationResponseService {
public:
    using Completion = CVNNotificationResponseHandler::Completion;

    static void didReceiveNotificationResponse(const platform::NotificationResponse& response,
                                               const Completion& withCompletion);
    /// A silent push, which is treated as a click: deliberate.
    static void didReceiveRemoteNotification(const foundation::Value& payload,
                                             const Completion& withCompletion);
    /// Posts the notice for a notification of this system. How it is presented is the host's
    /// business.
    static void willPresentForegroundNotification(
        const platform::DeliveredNotification& notification);
};

}  // namespace tavrolin
