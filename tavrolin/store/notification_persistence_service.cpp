#include "tavrolin/store/notification_persistence_service.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_set>
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

constexpr std::string_view kCouldNotAdd = "Could not add notification due to exception = %@";
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

std::shared_ptr<const Predicate> isUnreadAndNotDismissed() {
    return Predicate::withFormat("(isRead = %d and isDismissed = %d)", {0, 0});
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

// One save takes in all that waits in their context.
void saveAll(const Service::Records& records, const Save& save) {
    const auto first =
        std::find_if(records.begin(), records.end(),
                     [](const Service::Record& record) { return record != nullptr; });
    if (first != records.end()) save(**first);
}

// Raises for a field that no record takes. Asked before a record is begun, which would otherwise be
// saved, half filled, together with the others.
void checkFields(const CVNPayload& product) {
    for (const Value* text : {&product.trid, &product.collapseKey, &product.scheduledDate,
                              &product.ttl, &product.publishedDate}) {
        static_cast<void>(text->string());
    }
}

// Which of the payloads are to be added: those with a trid that neither the store nor one before
// them has.
std::vector<std::size_t> positionsOfNew(const std::vector<Service::Payload>& payloads,
                                        const Service::Context& context) {
    std::vector<std::size_t> positions;
    std::unordered_set<std::string_view> seen;
    for (std::size_t i = 0; i < payloads.size(); ++i) {
        quietly(kAdd, kCouldNotAdd, [&] {
            const CVNPayload* product = productOf(payloads[i]);
            if (product == nullptr || product->trid.length() == 0) return;
            if (seen.contains(product->trid.string()) || recordFor(payloads[i], context)) return;
            checkFields(*product);
            seen.insert(product->trid.string());
            positions.push_back(i);
        });
    }
    return positions;
}

void deleteMediaOf(const Event& record) {
    const auto stored = record.payload();
    if (const CVNPayload* product = productOf(stored)) product->deleteStoredMedia();
}

}  // namespace

Service::Record Service::addNotificationWithPayload(const Payload& payload, std::uint64_t andSource,
                                                    std::uint64_t andCampaignTyp,
                                                    const Context& inContext) {
    return addNotificationsWithPayloads({payload}, andSource, andCampaignTyp, inContext).front();
}

Service::Records Service::addNotificationsWithPayloads(const std::vector<Payload>& payloads,
                                                       std::uint64_t andSource,
                                                       std::uint64_t andCampaignTyp,
                                                       const Context& inContext) {
    Records added(payloads.size());
    quietly(kAdd, kCouldNotAdd, [&] {
        inOneTransaction(inContext, [&](const Save& save) {
            Records records(payloads.size());
            for (const std::size_t i : positionsOfNew(payloads, inContext)) {
                records[i] = Event::insertNewObjectForEntityWithManagedContext(inContext);
                fill(*records[i], payloads[i], andSource, andCampaignTyp);
            }
            saveAll(records, save);
            for (const Record& record : records) {
                if (record) log(LogLevel::debug, kAdd, "Inserted a notification");
            }
            added = std::move(records);
        });
    });
    return added;
}

Service::Record Service::updateNotificationWithPayload(const Payload& payload,
                                                       bool byDisplayingOnTray,
                                                       const Context& inContext) {
    return updateNotificationsWithPayloads({payload}, byDisplayingOnTray, inContext).front();
}

Service::Records Service::updateNotificationsWithPayloads(const std::vector<Payload>& payloads,
                                                          bool byDisplayingOnTray,
                                                          const Context& inContext) {
    Records records(payloads.size());
    quietly(kUpdate, kCouldNotUpdate, [&] {
        inOneTransaction(inContext, [&](const Save& save) {
            // Looked up before the first change: a look-up goes through all that waits for a save.
            for (std::size_t i = 0; i < payloads.size(); ++i)
                records[i] = recordFor(payloads[i], inContext);
            for (std::size_t i = 0; i < payloads.size(); ++i) {
                if (!records[i]) continue;
                records[i]->setPayload(payloads[i]);
                if (byDisplayingOnTray) {
                    records[i]->setAlreadyDisplayedOnTray(true);
                } else {
                    records[i]->setCurrentStatus(NotificationCurrentStatus(kStatusScheduled));
                }
            }
            saveAll(records, save);
        });
        // Also when there was nothing to update.
        for (std::size_t i = 0; i < payloads.size(); ++i)
            log(LogLevel::debug, kUpdate, "Updated the notification payload");
    });
    return records;
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
    return Event::findObjectsWithPredictate(isUnreadAndNotDismissed(), context);
}

std::size_t Service::countOfUnreadNotificationsFromTrayInContext(const Context& context) {
    const std::int64_t count =
        Event::countForObjectsWithPredictate(isUnreadAndNotDismissed(), std::nullopt, context);
    return count == Event::kNotFound ? 0 : static_cast<std::size_t>(count);
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
