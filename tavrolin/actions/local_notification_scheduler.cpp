#include "tavrolin/actions/local_notification_scheduler.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/notification_operation.h"
#include "tavrolin/service_extension/notification_queue.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace tavrolin {

using foundation::Date;
using foundation::Exception;
using foundation::Failure;
using foundation::Value;
using Scheduler = CVNLocalNotificationScheduler;
using Service = CVNPushNotificationPersistenceService;

namespace {

constexpr double kDefaultInterval = 1;       // seconds
constexpr double kCollapseKeyPassDelay = 5;  // seconds, in which the store takes the new ones in

constexpr std::string_view kSingle =
    "+[CVNLocalNotificationScheduler "
    "scheduleSingleLocalNotificationWithPayload:gwSource:campaignType:withCompletionHandler:]";
constexpr std::string_view kCouldNotSchedule =
    "Could Not Schedule Local Notification Due To Exception : %@";

// How a request ended; nothing when it was dropped.
using Outcome = std::function<void(std::optional<bool> success)>;

Value collapseKeyOf(const Scheduler::Payload& payload) {
    const Value key = payload && payload->cvnPayload ? payload->cvnPayload->collapseKey : Value();
    return foundation::stringOrEmpty(key).empty() ? Value() : key;
}

// --- One request -------------------------------------------------------------------------------

std::optional<Date> dateIn(const Value& text) {
    return text.isString() ? CVNPushDateUtility::dateFromString(text) : std::nullopt;
}

double secondsFromNow(std::optional<Date> date) {
    if (!date) return 0;
    return foundation::secondsBetween(platform::current().dispatch->now(), *date);
}

bool hasPassed(std::optional<Date> date) {
    return CVNPushDateUtility::checkIfDate(date, static_cast<std::int64_t>(secondsFromNow(date)));
}

// Nothing when the request is to be dropped.
std::optional<double> triggerInterval(const Scheduler::Payload& payload,
                                      std::uint64_t campaignType) {
    if (campaignType != kCampaignTypeScheduled) return kDefaultInterval;
    const auto& section = payload->cvnPayload;
    const auto scheduled = section ? dateIn(section->scheduledDate) : std::nullopt;
    const auto expiry = section ? dateIn(section->ttl) : std::nullopt;
    if (hasPassed(scheduled) && !hasPassed(expiry)) return kDefaultInterval;
    const double interval = secondsFromNow(scheduled);
    if (interval > 0) return interval;
    return std::nullopt;
}

void scheduleContent(const Scheduler::Payload& payload, platform::NotificationContent content,
                     std::uint64_t campaignType, const Outcome& outcome) {
    const auto interval = triggerInterval(payload, campaignType);
    if (!interval) return outcome(std::nullopt);
    const bool isAdded = guard(
        kSingle, kCouldNotSchedule,
        [&] {
            Scheduler::sheduleNotificationWithUniqueIdentifier(
                Scheduler::requestIdentifier(payload), std::move(content), *interval,
                [outcome](bool success) { outcome(success); });
        },
        LogLevel::debug);
    if (!isAdded) outcome(false);
}

// Calls the outcome once, however it ends.
void prepareAndSchedule(const Scheduler::Payload& payload, std::uint64_t campaignType,
                        const Outcome& outcome) {
    const bool isPrepared = guard(
        kSingle, kCouldNotSchedule,
        [&] {
            if (!payload) Exception::raise(Exception::kInvalidArgument, "there is no payload");
            CVNNotificationQueue::sharedInstance().addNotificationOperation(
                CVNNotificationOperation::initWithLocalNotificaitonPayload(
                    payload, [campaignType, outcome](const auto& prepared, const auto& content) {
                        scheduleContent(prepared, content->snapshot(), campaignType, outcome);
                    }));
        },
        LogLevel::debug);
    if (!isPrepared) outcome(false);
}

// --- Many requests -----------------------------------------------------------------------------

// Collects what was scheduled of so many requests, and marks it in the store in one transaction
// once the last of them has ended. Threads: any.
class ScheduledMarks {
public:
    void expectRequest() { ++open_; }

    void requestEnded(const Scheduler::Payload& payload, bool isScheduled) {
        std::vector<Scheduler::Payload> scheduled;
        {
            const std::lock_guard lock(mutex_);
            if (isScheduled) scheduled_.push_back(payload);
            if (--open_ > 0) return;
            scheduled.swap(scheduled_);
        }
        if (!scheduled.empty()) {
            CVNPushEventRecorder::recordNotificationsAreScheduledWithPayloads(std::move(scheduled));
        }
    }

private:
    std::mutex mutex_;
    std::size_t open_ = 0;
    std::vector<Scheduler::Payload> scheduled_;
};

struct Request {
    Scheduler::Payload payload;
    std::uint64_t campaignType;
};

bool hasMedia(const Scheduler::Payload& payload) {
    const CVNPayload* section = payload ? payload->cvnPayload.get() : nullptr;
    return section != nullptr && (!foundation::stringOrEmpty(section->mediaURL).empty() ||
                                  recordCount(section->carousel) > 0);
}

void scheduleAll(const std::vector<Request>& requests, const Scheduler::Completion& completion) {
    // What has nothing to download doesn't wait for what has.
    const auto atOnce = std::make_shared<ScheduledMarks>();
    const auto afterDownloads = std::make_shared<ScheduledMarks>();
    const auto marksOf = [&](const Scheduler::Payload& payload) {
        return hasMedia(payload) ? afterDownloads : atOnce;
    };
    for (const Request& request : requests)
        marksOf(request.payload)->expectRequest();
    for (const auto& [payload, campaignType] : requests) {
        prepareAndSchedule(
            payload, campaignType,
            [marks = marksOf(payload), payload, completion](std::optional<bool> success) {
                marks->requestEnded(payload, success.value_or(false));
                if (success && completion) completion(*success);
            });
    }
}

Request requestFor(const CorvalenPushNotificationEvent& record) {
    return {record.payload(), CVNPushNotificationCampaignTypeString(record.campaignType())};
}

template <class Work>
void inBackground(Work work) {
    CVNPushCoreDataController::sharedInstance().performBackgroundTask(std::move(work));
}

}  // namespace

void Scheduler::scheduleSingleLocalNotificationWithPayload(const Payload& payload,
                                                           std::uint64_t /*gwSource*/,
                                                           std::uint64_t campaignType,
                                                           Completion withCompletionHandler) {
    scheduleAll({{payload, campaignType}}, withCompletionHandler);
}

void Scheduler::scheduleLocalNotifications(const std::vector<Payload>& payloads,
                                           std::uint64_t andSource, std::uint64_t andCampaignType,
                                           const Completion& withCompletionHandler) {
    CVNPushEventRecorder::recordNotificationDeliveryEventsWithId(
        kEventNotificationDelivered, kEventTypeSystem, payloads, andSource, andCampaignType);
    std::vector<Request> requests;
    std::unordered_set<std::string> seen;
    Value collapseKeys = Value::array();
    for (const Payload& payload : payloads) {
        if (Value key = collapseKeyOf(payload); key.isNil()) {
            requests.push_back({payload, andCampaignType});
        } else if (seen.emplace(key.string()).second) {
            collapseKeys.append(std::move(key));
        }
    }
    scheduleAll(requests, withCompletionHandler);
    if (seen.empty()) return;
    platform::current().dispatch->afterMain(kCollapseKeyPassDelay, [collapseKeys] {
        checkAndScheduleUpdateNotificationBasedOnCollapseKey(collapseKeys);
    });
}

void Scheduler::sheduleNotificationWithUniqueIdentifier(
    const Value& identifier, platform::NotificationContent andNotificationContent,
    double andTriggerTimeInterval, Completion withCompletionHandler) {
    if (identifier.length() == 0) {
        Exception::raise(Exception::kInvalidArgument, "a request needs an identifier");
    }
    platform::NotificationRequest request{
        std::string(identifier.string()), std::move(andNotificationContent),
        platform::TimeIntervalTrigger::withTimeInterval(andTriggerTimeInterval)};
    platform::current().notificationCenter->addNotificationRequest(
        std::move(request),
        [completion = std::move(withCompletionHandler)](const Failure& failure) {
            log(LogLevel::debug,
                "+[CVNLocalNotificationScheduler sheduleNotificationWithUniqueIdentifier:"
                "andNotificationContent:andTriggerTimeInterval:withCompletionHandler:]",
                failure ? formatMessage(kCouldNotSchedule, {failure->localizedDescription})
                        : "Local Notification Scheduled Successfully");
            if (completion) completion(!failure);
        });
}

Value Scheduler::requestIdentifier(const Payload& payload) {
    if (Value key = collapseKeyOf(payload); !key.isNil()) return key;
    return payload && payload->cvnPayload ? payload->cvnPayload->trid : Value();
}

void Scheduler::checkNotificationsAreScheduled() {
    platform::current().notificationCenter->getPendingNotificationIdentifiers(
        [](std::vector<std::string> identifiers) {
            const std::unordered_set<std::string> pending(identifiers.begin(), identifiers.end());
            inBackground([pending](const Service::Context& context) {
                const auto isPending = [&](const Value& identifier) {
                    return pending.contains(std::string(foundation::stringOrEmpty(identifier)));
                };
                std::vector<Request> requests;
                for (const auto& record : Service::getAllScheduledNotificationInContext(context)) {
                    // What waits under its collapse key is scheduled again all the same:
                    // deliberate.
                    if (isPending(record->trid()) && !isPending(record->collapseKey())) continue;
                    requests.push_back(requestFor(*record));
                }
                scheduleAll(requests, {});
            });
        });
}

void Scheduler::checkAndScheduleUpdateNotificationBasedOnCollapseKey(const Value& collapseKeys) {
    inBackground([collapseKeys](const Service::Context& context) {
        std::vector<Request> requests;
        for (const auto& record :
             Service::getAllLatestNotificationInContext(context, collapseKeys)) {
            requests.push_back(requestFor(*record));
        }
        scheduleAll(requests, {});
    });
}

}  // namespace tavrolin
