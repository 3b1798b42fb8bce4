#include "tavrolin/actions/notification_helper.h"

#include <string_view>
#include <unordered_set>
#include <utility>

#include "tavrolin/actions/local_notification_scheduler.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/predicate.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace tavrolin {

using foundation::Exception;
using foundation::Predicate;
using foundation::Value;
using Helper = CVNNotificationHelper;
using Service = CVNPushNotificationPersistenceService;

namespace {

constexpr std::string_view kTridPath = "cvnPayload.trid";

Value tridOf(const Helper::Payload& payload) {
    return payload->cvnPayload ? payload->cvnPayload->trid : Value();
}

// The stored trids among those of the payloads. The predicate goes through its list for every
// payload, so it must not be handed everything that was ever stored.
Value storedTrids(const std::vector<Helper::Payload>& payloads, const Service::Context& context) {
    std::vector<Value> trids;
    trids.reserve(payloads.size());
    std::unordered_set<std::string_view> offered;
    for (const Helper::Payload& payload : payloads)
        trids.push_back(tridOf(payload));
    for (const Value& trid : trids)
        offered.insert(foundation::stringOrEmpty(trid));
    Value stored = Value::array();
    for (const Value& trid : Service::getAllNotificationTridInContext(context)) {
        // Once is enough of each.
        if (offered.erase(foundation::stringOrEmpty(trid)) > 0) stored.append(trid);
    }
    return stored;
}

}  // namespace

std::vector<Value> Helper::getDeliveredNotificationTridFromTray(
    const std::vector<platform::DeliveredNotification>& notifications) {
    return CVNPushEventRecorder::getDeliveredNotificationTridFromTray(notifications);
}

void Helper::getPendingNotificationIdentifiers(
    std::function<void(const std::vector<std::string>&)> completion) {
    platform::current().notificationCenter->getPendingNotificationIdentifiers(
        std::move(completion));
}

void Helper::getFilterNotifications(
    std::vector<Payload> notifications,
    std::function<void(std::vector<Payload> filtered)> withCompletionHandler) {
    std::erase(notifications, nullptr);
    CVNPushCoreDataController::sharedInstance().performBackgroundTask(
        [notifications = std::move(notifications),
         completion = std::move(withCompletionHandler)](const Service::Context& context) {
            const auto isNew = Predicate::withFormat("NOT (cvnPayload.trid IN %@)",
                                                     {storedTrids(notifications, context)});
            std::vector<Payload> filtered;
            for (const Payload& payload : notifications) {
                const auto field = [&](std::string_view path) {
                    if (path == kTridPath) return tridOf(payload);
                    Exception::raise(Exception::kInvalidArgument, "no such field");
                };
                if (isNew->evaluate(field)) filtered.push_back(payload);
            }
            if (completion) completion(std::move(filtered));
        });
}

void Helper::scheduleNotification(
    const Value& payload,
    std::function<void(platform::BackgroundFetchResult)> withCompletionHandler) {
    Payload model = CVNNotificationParser::parseNotificationPayloadDictionary(payload);
    if (!model) {
        if (withCompletionHandler) withCompletionHandler(platform::kFetchNoData);
        return;
    }
    const auto finish = [completion = std::move(withCompletionHandler)](bool success) {
        log(LogLevel::info, "+[CVNNotificationHelper scheduleNotification:withCompletionHandler:]",
            formatMessage("Notification Schedule Status = %@", {success ? "Yes" : "No"}));
        CVNPushCorvalenHandler::sharedInstance().processEventsManually();
        if (completion) completion(success ? platform::kFetchNewData : platform::kFetchFailed);
    };
    getFilterNotifications({std::move(model)}, [finish](const std::vector<Payload>& filtered) {
        if (filtered.empty()) return finish(false);  // stored already
        CVNLocalNotificationScheduler::scheduleLocalNotifications(filtered, kGatewaySourceAPNS,
                                                                  kCampaignTypeScheduled, finish);
    });
}

}  // namespace tavrolin
