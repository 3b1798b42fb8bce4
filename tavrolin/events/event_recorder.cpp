#include "tavrolin/events/event_recorder.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/predicate.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"
#include "tavrolin/store/push_notification_event.h"

namespace tavrolin {

using foundation::Value;
using Service = CVNPushNotificationPersistenceService;
using Context = std::shared_ptr<platform::ManagedObjectContext>;
using Record = foundation::Ref<CorvalenPushNotificationEvent>;

namespace {

template <class Work>
void inBackground(Work work) {
    CVNPushCoreDataController::sharedInstance().performBackgroundTask(std::move(work));
}

// A copy, since the store archives the model on its own thread while the media step goes on filling
// in its paths.
CVNPushEventRecorder::Payload copyOf(const CVNPushEventRecorder::Payload& payload) {
    if (!payload) return nullptr;
    CVNPushEventRecorder::Payload copy;
    guard(
        "+[CVNPushEventRecorder recordNotificationDeliveryEventWithId:eventType:"
        "notificaitonPayload:andSource:andCampaignType:]",
        "Could not copy the payload due to exception: %@", [&] {
            const auto bytes = foundation::KeyedArchiver::archivedData(*payload, true);
            copy = foundation::KeyedUnarchiver::unarchive<CVNNotificationPayloadModel>(bytes);
        });
    return copy;
}

Value tridOf(const CVNPushEventRecorder::Payload& payload) {
    return payload && payload->cvnPayload ? payload->cvnPayload->trid : Value();
}

Value metaOf(const CVNPushEventRecorder::Payload& payload) {
    return payload && payload->cvnPayload ? payload->cvnPayload->pnMeta : Value();
}

// All five values must be there: a missing one raises, and nothing catches it, as with the
// platform's own dictionaries.
Value eventDictionary(const Value& trid, std::uint64_t source, std::uint64_t campaignType,
                      const Value& meta) {
    return Value::dictionary({{kPNTrid, trid},
                              {kEventDataIsAmplified, source == kGatewaySourcePushVex ? 1 : 0},
                              {kCommonDataGWSource, source},
                              {kCommonDataPNCampaignType, campaignType},
                              {kPNMeta, meta}});
}

Value eventDictionary(const CorvalenPushNotificationEvent& record, const Value& trid,
                      const Value& meta) {
    return eventDictionary(trid, CVNPushNotificationGatewaySourceFromString(record.source()),
                           CVNPushNotificationCampaignTypeString(record.campaignType()), meta);
}

void send(std::uint64_t eventId, std::uint64_t eventType, const Value& payload) {
    CVNPushCorvalenHandler::sharedInstance().recordEventWithId(
        static_cast<std::int64_t>(eventId), static_cast<std::int64_t>(eventType), payload);
}

void dismiss(const Record& record, std::uint64_t eventId, std::uint64_t eventType,
             const Context& context) {
    const auto stored = record->payload();
    // Damaged: neither found again by its trid nor worth a process's life.
    if (!stored || metaOf(stored).isNil()) return;
    Service::markNotificationAsDismissedWithPayload(stored, context);
    send(eventId, eventType, eventDictionary(*record, record->trid(), metaOf(stored)));
}

}  // namespace

void CVNPushEventRecorder::recordNotificationDeliveryEventWithId(std::uint64_t eventId,
                                                                 std::uint64_t eventType,
                                                                 const Payload& notificaitonPayload,
                                                                 std::uint64_t andSource,
                                                                 std::uint64_t andCampaignType) {
    inBackground([=, payload = copyOf(notificaitonPayload)](const Context& context) {
        if (!Service::addNotificationWithPayload(payload, andSource, andCampaignType, context)) {
            return;
        }
        send(eventId, eventType,
             eventDictionary(tridOf(payload), andSource, andCampaignType, metaOf(payload)));
    });
}

void CVNPushEventRecorder::recordNotificationDeliveryEventsWithId(
    std::uint64_t eventId, std::uint64_t eventType,
    const std::vector<Payload>& notificaitonPayloads, std::uint64_t andSource,
    std::uint64_t andCampaignType) {
    if (notificaitonPayloads.empty()) return;
    std::vector<Payload> copies;
    copies.reserve(notificaitonPayloads.size());
    for (const Payload& payload : notificaitonPayloads)
        copies.push_back(copyOf(payload));
    inBackground([=, payloads = std::move(copies)](const Context& context) {
        const auto added =
            Service::addNotificationsWithPayloads(payloads, andSource, andCampaignType, context);
        for (std::size_t i = 0; i < payloads.size(); ++i) {
            if (!added[i]) continue;
            guard(
                "+[CVNPushEventRecorder recordNotificationDeliveryEventsWithId:eventType:"
                "notificaitonPayloads:andSource:andCampaignType:]",
                "Could not send the event due to exception: %@", [&] {
                    send(eventId, eventType,
                         eventDictionary(tridOf(payloads[i]), andSource, andCampaignType,
                                         metaOf(payloads[i])));
                });
        }
    });
}

void CVNPushEventRecorder::recordNotificationClickedEventWithId(std::uint64_t eventId,
                                                                std::uint64_t eventType,
                                                                const Payload& andPayload) {
    if (eventId != kEventNotificationClicked) return;
    inBackground([=](const Context& context) {
        const Record record = Service::markNotificationAsReadWithPayload(andPayload, context);
        if (!record) return;
        send(eventId, eventType, eventDictionary(*record, tridOf(andPayload), metaOf(andPayload)));
    });
}

void CVNPushEventRecorder::recordNotificationRepliedEventWithName(const Value& eventName,
                                                                  std::uint64_t eventType,
                                                                  const Payload& andPayload,
                                                                  const Value& andReplyEventData) {
    inBackground([=](const Context& context) {
        const Record record = Service::getNotificationFromPayload(andPayload, context);
        if (!record) return;
        const Value trid = tridOf(andPayload);
        const Value& text = andReplyEventData[kEventDataPNReplyText];
        // Neither "isAmplified" nor "ct" here, unlike the other events: deliberate.
        Value reply = Value::dictionary(
            {{kPNTrid, trid.isNil() ? Value("") : trid},
             {kCommonDataGWSource, CVNPushNotificationGatewaySourceFromString(record->source())},
             {kEventDataPNReplyText, text.isNil() ? Value("") : text}});
        const Value meta = metaOf(andPayload);
        if (meta.isDictionary() && meta.count() > 0) reply.set(kPNMeta, meta);
        CVNPushCorvalenHandler::sharedInstance().recordEventWithName(
            eventName, static_cast<std::int64_t>(eventType), reply);
    });
}

void CVNPushEventRecorder::recordNotificationDisplayedOnTrayWithPayload(const Payload& payload) {
    inBackground([payload](const Context& context) {
        Service::updateNotificationWithPayload(payload, true, context);
    });
}

void CVNPushEventRecorder::recordNotificationIsScheduledWithPayload(const Payload& payload) {
    inBackground([payload](const Context& context) {
        Service::updateNotificationWithPayload(payload, false, context);
    });
}

void CVNPushEventRecorder::recordNotificationsAreScheduledWithPayloads(
    std::vector<Payload> payloads) {
    if (payloads.empty()) return;
    inBackground([payloads = std::move(payloads)](const Context& context) {
        Service::updateNotificationsWithPayloads(payloads, false, context);
    });
}

void CVNPushEventRecorder::recordNotificationDismissedEventWithPayload(const Payload& payload) {
    inBackground([payload](const Context& context) {
        if (const Record record = Service::getNotificationFromPayload(payload, context)) {
            dismiss(record, kEventNotificationDismissed, kEventTypeSystem, context);
        }
    });
}

void CVNPushEventRecorder::recordNotificationDismissedEventWithId(std::uint64_t eventId,
                                                                  std::uint64_t eventType) {
    platform::current().notificationCenter->getDeliveredNotifications(
        [=](const std::vector<platform::DeliveredNotification>& delivered) {
            inBackground([=](const Context& context) {
                Value onTray = Value::array();
                for (Value& trid : getDeliveredNotificationTridFromTray(delivered)) {
                    onTray.append(std::move(trid));
                }
                const auto isGone = foundation::Predicate::withFormat("NOT (trid IN %@)", {onTray});
                for (const Record& record :
                     Service::getUnreadNotificationsFromTrayInContext(context)) {
                    const auto field = [&](std::string_view key) {
                        return record->valueForKey(key);
                    };
                    if (isGone->evaluate(field)) dismiss(record, eventId, eventType, context);
                }
            });
        });
}

std::vector<Value> CVNPushEventRecorder::getDeliveredNotificationTridFromTray(
    const std::vector<platform::DeliveredNotification>& notifications) {
    std::vector<Value> trids;
    for (const auto& notification : notifications) {
        const auto payload = CVNNotificationParser::parseNotificationPayloadDictionary(
            notification.request.content.userInfo);
        // One without a tracking id can't be collected: nil goes into no list.
        if (Value trid = tridOf(payload); !trid.isNil()) trids.push_back(std::move(trid));
    }
    return trids;
}

Value CVNPushEventRecorder::getDeliveredNotificationIdentifierFromTray(
    const std::vector<platform::DeliveredNotification>& notifications,
    const Value& withMatchingTrid) {
    const auto found =
        std::find_if(notifications.begin(), notifications.end(), [&](const auto& notification) {
            const Value trid = tridOf(CVNNotificationParser::parseNotificationPayloadDictionary(
                notification.request.content.userInfo));
            return !trid.isNil() && trid == withMatchingTrid;
        });
    return found == notifications.end() ? Value() : Value(found->request.identifier);
}

}  // namespace tavrolin
