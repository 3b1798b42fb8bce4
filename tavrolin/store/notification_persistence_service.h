#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "tavrolin/store/push_notification_event.h"

namespace tavrolin {

/// The life of a notification as changes of its stored record, which its payload's `trid` names.
///
/// Every operation runs at once, in the given context; callers are inside
/// `CVNPushCoreDataController::performBackgroundTask`. Looking a record up and changing it is one
/// transaction of the store, so two processes never act on one state. Exceptions and failures of
/// the store are logged, quietly, and never reach the caller; a save that failed still gives the
/// record.
class CVNPushNotificationPersistenceService {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;
    using Context = std::shared_ptr<platform::ManagedObjectContext>;
    using Record = std::shared_ptr<CorvalenPushNotificationEvent>;
    using Records = std::vector<Record>;

    /// The new record, "delivered" and unread; null when the payload has no `trid` or when there is
    /// a record of it already, which is left alone.
    static Record addNotificationWithPayload(const Payload& payload, std::uint64_t andSource,
                                             std::uint64_t andCampaignTyp,
                                             const Context& inContext);
    /// The same of many, in one transaction: a record, or null, for each payload. One that can't be
    /// added doesn't keep the rest out.
    static Records addNotificationsWithPayloads(const std::vector<Payload>& payloads,
                                                std::uint64_t andSource,
                                                std::uint64_t andCampaignTyp,
                                                const Context& inContext);
    /// Takes the payload over, and marks the record as shown on the tray, or else as scheduled.
    /// Null when there is no such record.
    static Record updateNotificationWithPayload(const Payload& payload, bool byDisplayingOnTray,
                                                const Context& inContext);
    /// The same of many, in one transaction: a record, or null, for each payload.
    static Records updateNotificationsWithPayloads(const std::vector<Payload>& payloads,
                                                   bool byDisplayingOnTray,
                                                   const Context& inContext);
    /// Also deletes the stored media. Null when there is no such record or it was read already.
    static Record markNotificationAsReadWithPayload(const Payload& payload,
                                                    const Context& inContext);
    /// Also deletes the stored media; each time anew. Null when there is no such record.
    static Record markNotificationAsDismissedWithPayload(const Payload& payload,
                                                         const Context& inContext);

    /// Neither read nor dismissed, shown on the tray or not.
    static Records getUnreadNotificationsFromTrayInContext(const Context& context);
    /// How many they are, without reading them; 0 when the store can't count.
    static std::size_t countOfUnreadNotificationsFromTrayInContext(const Context& context);
    /// Of every record, in the order of insertion.
    static std::vector<foundation::Value> getAllNotificationTridInContext(const Context& context);
    /// Deletes what was inserted 30 days ago or earlier. Media files stay. True when nothing
    /// failed.
    static bool deleteExpiredNotificationsInContext(const Context& context);
    /// Marked as scheduled, and the scheduled date is still to come.
    static Records getAllScheduledNotificationInContext(const Context& context);
    static Record getNotificationFromPayload(const Payload& payload, const Context& inContext);
    /// Always empty: see `groupByCollapseKeyAndOrderByPublishedDate`.
    static Records getAllLatestNotificationInContext(const Context& context,
                                                     const foundation::Value& basedOnCollapseKey);
};

}  // namespace tavrolin
