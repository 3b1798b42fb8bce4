#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/application.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// What lies on the tray and waits to be shown, and the scheduling of silent pushes. Threads: any.
class CVNNotificationHelper {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;

    /// The tracking ids of those that are this system's, in order.
    static std::vector<foundation::Value> getDeliveredNotificationTridFromTray(
        const std::vector<platform::DeliveredNotification>& notifications);
    /// The completion runs on a queue of the notification center's.
    static void getPendingNotificationIdentifiers(
        std::function<void(const std::vector<std::string>&)> completion);
    /// Those that are not stored yet. The completion runs in a background task of the store, and is
    /// not called while the store is not open.
    static void getFilterNotifications(
        std::vector<Payload> notifications,
        std::function<void(std::vector<Payload> filtered)> withCompletionHandler);
    /// Schedules a silent push. The completion gets 1 for a push that is not this system's, 2 when
    /// nothing was left to schedule or that failed, else 0; it is not called when the scheduler
    /// drops the request, nor for a push with a collapse key.
    static void scheduleNotification(
        const foundation::Value& payload,
        std::function<void(platform::BackgroundFetchResult)> withCompletionHandler);
};

}  // namespace tavrolin
