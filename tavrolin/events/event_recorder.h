#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// Takes each step of a notification's life to the store and, as an event, to the core SDK.
///
/// Every recording operation returns at once and works on a background context of the store; what
/// it doesn't find there it passes over without an error. Payload models are not kept beyond that
/// work and must not be changed while it is under way, except by the delivery, which takes a copy
/// first. Threads: any.
class CVNPushEventRecorder {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;

    /// Adds the notification to the store and, when it was not there yet, sends the event.
    static void recordNotificationDeliveryEventWithId(std::uint64_t eventId,
                                                      std::uint64_t eventType,
                                                      const Payload& notificaitonPayload,
                                                      std::uint64_t andSource,
                                                      std::uint64_t andCampaignType);
    /// The same of many, in one transaction of the store, after which the events are sent in order.
    /// One that can't be stored or reported doesn't keep the rest from it.
    static void recordNotificationDeliveryEventsWithId(
        std::uint64_t eventId, std::uint64_t eventType,
        const std::vector<Payload>& notificaitonPayloads, std::uint64_t andSource,
        std::uint64_t andCampaignType);
    /// Marks it read and, the first time, sends the event. Ids other than 13 are ignored.
    static void recordNotificationClickedEventWithId(std::uint64_t eventId, std::uint64_t eventType,
                                                     const Payload& andPayload);
    /// `andReplyEventData` holds "repliedText".
    static void recordNotificationRepliedEventWithName(const foundation::Value& eventName,
                                                       std::uint64_t eventType,
                                                       const Payload& andPayload,
                                                       const foundation::Value& andReplyEventData);
    static void recordNotificationDisplayedOnTrayWithPayload(const Payload& payload);
    static void recordNotificationIsScheduledWithPayload(const Payload& payload);
    /// The same of many, in one transaction of the store.
    static void recordNotificationsAreScheduledWithPayloads(std::vector<Payload> payloads);
    /// Marks it dismissed and sends event 14.
    static void recordNotificationDismissedEventWithPayload(const Payload& payload);
    /// The sweep: whatever is stored unread and undismissed and no longer on the tray was
    /// dismissed. Offered to the host and the core SDK; nothing in the library starts it.
    static void recordNotificationDismissedEventWithId(std::uint64_t eventId,
                                                       std::uint64_t eventType);

    /// The tracking ids of those on the tray that are this system's, in order.
    static std::vector<foundation::Value> getDeliveredNotificationTridFromTray(
        const std::vector<platform::DeliveredNotification>& notifications);
    /// The request identifier of the first one with the tracking id; nil when there is none.
    static foundation::Value getDeliveredNotificationIdentifierFromTray(
        const std::vector<platform::DeliveredNotification>& notifications,
        const foundation::Value& withMatchingTrid);
};

}  // namespace tavrolin
