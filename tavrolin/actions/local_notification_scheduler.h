#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// Schedules notifications on the device itself. Completions may be empty; each says where it runs.
/// Threads: any.
class CVNLocalNotificationScheduler {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;
    using Completion = std::function<void(bool success)>;

    /// Downloads the payload's media, then schedules it: a second from now, or, of a scheduled
    /// campaign whose date is still to come, at that date. A request whose date is missing, or has
    /// passed with the campaign expired, is dropped: its completion is not called, deliberately.
    /// The completion runs on a queue of the notification center's, or, for a payload that can't be
    /// scheduled (one without any identifier), wherever that was found.
    static void scheduleSingleLocalNotificationWithPayload(const Payload& payload,
                                                           std::uint64_t gwSource,
                                                           std::uint64_t campaignType,
                                                           Completion withCompletionHandler);
    /// Records every payload as delivered, then schedules those without a collapse key, each with
    /// the completion. 5 seconds later, on the main queue, the latest of each collapse key follows.
    /// However many there are, the store takes them in in two transactions: the deliveries, and,
    /// when the last request was answered or dropped, the marks of what is scheduled.
    static void scheduleLocalNotifications(const std::vector<Payload>& payloads,
                                           std::uint64_t andSource, std::uint64_t andCampaignType,
                                           const Completion& withCompletionHandler);
    /// Spelt so on purpose. Raises `foundation::Exception` for an identifier that is no text or an
    /// empty one, and for an interval (in seconds) that is not above 0. The completion runs on a
    /// queue of the notification center's.
    static void sheduleNotificationWithUniqueIdentifier(
        const foundation::Value& identifier, platform::NotificationContent andNotificationContent,
        double andTriggerTimeInterval, Completion withCompletionHandler);
    /// Under which a payload's request waits: its collapse key, so that it replaces an earlier one
    /// of the same key, or else its tracking id. Nil when it has neither.
    static foundation::Value requestIdentifier(const Payload& payload);

    /// Schedules again what is stored as scheduled and no longer pending.
    static void checkNotificationsAreScheduled();
    /// Schedules the latest stored notification of each key, an array of texts.
    static void checkAndScheduleUpdateNotificationBasedOnCollapseKey(
        const foundation::Value& collapseKeys);
};

}  // namespace tavrolin
