#include "tavrolin/store/notification_persistence_service.h"

#include <functional>
#include <string_view>
#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/predicate.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Date;
using foundation::Exception;
using foundation::Failure;
using foundation::Predicate;
using foundation::Value;
using Event = CorvalenPushNotificationEvent;
using Service = CVNPushNotificationPersistenceService;

namespace {

constexpr double kSecondsUntilExpiry = 30 * 86'400;

constexpr std::string_view kAdd =
    "+[CVNPushNotificationPersistenceService "
    "addNotificationWithPayload:andSource:andCampaignTyp:inContext:]";
constexpr std::string_view kUpdate =
    "+[CVNPushNotificationPersistenceService "
    "updateNotificationWithPayload:byDisplayingOnTray:inContext:]";
constexpr std::string_view kMarkRead =
    "+[CVNPushNotificationPersistenceService markNotificationAsReadWithPayload:inContext:]";
constexpr std::string_view kMarkDismissed =
    "+[CVNPushNotificationPersistenceService markNotificationAsDismissedWithPayload:inContext:]";

constexpr std::string_view kCouldNotUpdate = "Could not update notification due to exception = %@";
constexpr std::string_view kCouldNotExecute = "Could not execute due to exception = %@";

// A store fault never shows above this level here: deliberately quiet.
template <class Body>
void quietly(std::string_view operation, std::string_view message, Body&& body) {
    guard(operation, message, std::forward<Body>(body), LogLevel::debug);
}

Date now() {
    return platform::current().dispatch->now();
}

const CVNPayload* productOf(const Service::Payload& payload) {
    return payload ? payload->cvnPayload.get() : nullptr;
}

Value dateIn(const Value& text) {
    const auto date = CVNPushDateUtility::dateFromString(text);
    return date ? Value(*date) : Value();
}

Service::Record recordFor(const Service::Payload& payload, const Service::Context& context) {
    const CVNPayload* product = productOf(payload);
    const auto found = Event::findObjectsWithPredictate(
        Predicate::withFormat("(trid = %@)", {product ? product->trid : Value()}), context);
    return found.empty() ? nullptr : found.front();
}

using Save = std::function<void(Event&)>;

// Runs the work, which looks up, changes and saves, as one transaction. Where the store can begin
// none, the work is done on the objects alone and its save fails with the store's reason.
void inOneTransaction(const Service::Context& context,
                      const std::function<void(const Save&)>& work) {
    if (!context) Exception::raise(Exception::kInvalidArgument, "there is no context");
    const Failure failure =
        context->performExclusively([&] { work([](Event& record) { record.save(); }); });
    if (!failure) return;
    context->performAndWait([&] {
        work([&](Event&) {
            CVNPushManagedObject::logUnresolvedError("-[CVNPushManagedObject save]", *failure);
        });
    });
}

void fill(Event& record, const Service::Payload& payload, std::uint64_t source,
          std::uint64_t campaignType) {
    const CVNPayload& product = *payload->cvnPayload;
    record.setTrid(product.trid);
    record.setSource(NotificationGatewaySourceString(source));
    record.setCampaignType(CVNNotificationCampaignTypeString(campaignType));
    record.setPayload(payload);
    record.setTime(now());
    record.setAlreadyDisplayedOnTray(false);
    record.setIsDismissed(false);
    record.setIsRead(false);
    record.setScheduledDate(dateIn(product.scheduledDate));
    record.setTtlDate(dateIn(product.ttl));
    record.setCurrentStatus(NotificationCurrentStatus(kStatusDelivered));
    record.setPublishedDate(dateIn(product.publishedDate));
    record.setCollapseKey(product.collapseKey);
}

void deleteMediaOf(const Event& record) {
    const auto stored = record.payload();
    if (const CVNPayload* product = productOf(stored)) product->deleteStoredMedia();
}

}  // namespace

Service::Record Service::addNotificationWithPayload(const Payload& payload, std::uint64_t andSource,
                                                    std::uint64_t andCampaignTyp,
                                                    const Context& inContext) {
    Record added;
    quietly(kAdd, "Could not add notification due to exception = %@", [&] {
        const CVNPayload* product = productOf(payload);
        if (product == nullptr || product->trid.length() == 0) return;
        inOneTransaction(inContext, [&](const Save& save) {
            if (recordFor(payload, inContext)) return;
            const Record record = Event::insertNewObjectForEntityWithManagedContext(inContext);
            fill(*record, payload, andSource, andCampaignTyp);
            save(*record);
            log(LogLevel::debug, kAdd, "Inserted a notification");
            added = record;
        });
    });
    return added;
}

Service::Record Service::updateNotificationWithPayload(const Payload& payload,
                                                       bool byDisplayingOnTray,
                                                       const Context& inContext) {
    Record record;
    quietly(kUpdate, kCouldNotUpdate, [&] {
        inOneTransaction(inContext, [&](const Save& save) {
            record = recordFor(payload, inContext);
            if (!record) return;
            record->setPayload(payload);
            if (byDisplayingOnTray) {
                record->setAlreadyDisplayedOnTray(true);
            } else {
                record->setCurrentStatus(NotificationCurrentStatus(kStatusScheduled));
            }
            save(*record);
        });
        // Also when there was nothing to update.
        log(LogLevel::debug, kUpdate, "Updated the notification payload");
    });
    return record;
}

Service::Record Service::markNotificationAsReadWithPayload(const Payload& payload,
                                                           const Context& inContext) {
    Record record;
    quietly(kMarkRead, kCouldNotUpdate, [&] {
        inOneTransaction(inContext, [&](const Save& save) {
            record = recordFor(payload, inContext);
            if (record && record->isRead()) record = nullptr;
            if (!record) return;
            record->setIsRead(true);
            deleteMediaOf(*record);
            save(*record);
            log(LogLevel::debug, kMarkRead, "Marked notification as read");
        });
    });
    return record;
}

Service::Record Service::markNotificationAsDismissedWithPayload(const Payload& payload,
                                                                const Context& inContext) {
    Record record;
    quietly(kMarkDismissed, kCouldNotUpdate, [&] {
        inOneTransaction(inContext, [&](const Save& save) {
            record = recordFor(payload, inContext);
            if (!record) return;
            record->setIsDismissed(true);
            deleteMediaOf(*record);
            save(*record);
            log(LogLevel::debug, kMarkDismissed, "Marked notification as dismissed");
        });
    });
    return record;
}

Service::Records Service::getUnreadNotificationsFromTrayInContext(const Context& context) {
    return Event::findObjectsWithPredictate(
        Predicate::withFormat("(isRead = %d and isDismissed = %d)", {0, 0}), context);
}

std::vector<Value> Service::getAllNotificationTridInContext(const Context& context) {
    std::vector<Value> trids;
    quietly("+[CVNPushNotificationPersistenceService getAllNotificationTridInContext:]",
            kCouldNotExecute, [&] {
                for (const Value& row : Event::fetchAllObjectByProperty("trid", context)) {
                    if (const Value& trid = row["trid"]) trids.push_back(trid);
                }
            });
    return trids;
}

bool Service::deleteExpiredNotificationsInContext(const Context& context) {
    const Date cutOff{now().secondsSince1970 - kSecondsUntilExpiry};
    return Event::batchDeleteRequestWithPredictate(Predicate::withFormat("(time <= %@)", {cutOff}),
                                                   context);
}

Service::Records Service::getAllScheduledNotificationInContext(const Context& context) {
    Records records;
    quietly("+[CVNPushNotificationPersistenceService getAllScheduledNotificationInContext:]",
            kCouldNotExecute, [&] {
                records = Event::findObjectsWithPredictate(
                    Predicate::withFormat("(scheduledDate > %@ AND currentStatus = %@)",
                                          {now(), NotificationCurrentStatus(kStatusScheduled)}),
                    context);
            });
    return records;
}

Service::Record Service::getNotificationFromPayload(const Payload& payload,
                                                    const Context& inContext) {
    Record record;
    quietly("+[CVNPushNotificationPersistenceService getNotificationFromPayload:inContext:]",
            "Could not fetch notification due to exception = %@",
            [&] { record = recordFor(payload, inContext); });
    return record;
}

Service::Records Service::getAllLatestNotificationInContext(const Context& context,
                                                            const Value& basedOnCollapseKey) {
    Records records;
    quietly(
        "+[CVNPushNotificationPersistenceService "
        "getAllLatestNotificationInContext:basedOnCollapseKey:]",
        kCouldNotExecute, [&] {
            const auto groups = Event::groupByCollapseKeyAndOrderByPublishedDate(
                Predicate::withFormat("(collapseKey IN %@)", {basedOnCollapseKey}), context);
            for (const Value& group : groups) {
                const auto object =
                    context->objectWithID(Event::kEntityName, group["objectID"].integerValue());
                if (auto record = std::dynamic_pointer_cast<Event>(object)) {
                    records.push_back(std::move(record));
                }
            }
        });
    return records;
}

}  // namespace tavrolin
