#include "tavrolin/service_extension/notification_service_extension.h"

#include <string>
#include <utility>
#include <vector>

#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/json_text.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/notification_queue.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tavrolin/store/core_data_controller.h"

namespace tavrolin {

using foundation::Value;
using platform::DeliveredNotification;

namespace {

constexpr double kEventFlushDelay = 3;  // seconds after processing began
constexpr std::string_view kReceipt =
    "-[CVNNotificationServiceExtension didReceiveNotificationRequest:withContentHandler:]";

void logUserInfo(const Value& userInfo) {
    if (!CVNPushLogger::prints(LogLevel::debug)) return;
    const auto text =
        platform::current().json->serialise(userInfo, platform::JSONText::Style::pretty);
    log(LogLevel::debug, kReceipt,
        formatMessage("CVNNotificationPayload in json string format : %@",
                      {text ? Value(*text) : Value()}));
}

// Two absent fields are not the same.
bool isSame(const Value& a, const Value& b) {
    return !a.isNil() && a == b;
}

bool isReplacedBy(const CVNNotificationPayloadModel& older,
                  const CVNNotificationPayloadModel& newer) {
    return isSame(older.cvnPayload->trid, newer.cvnPayload->trid) ||
           isSame(older.cvnPayload->collapseKey, newer.cvnPayload->collapseKey);
}

}  // namespace

void CVNNotificationServiceExtension::didReceiveNotificationRequest(
    const platform::NotificationRequest& request, ContentHandler withContentHandler) {
    log(LogLevel::system, kReceipt, "✅ ✅ ✅ 👍 Tavrolin NSE Called ✅ ✅ ✅");
    logUserInfo(request.content.userInfo);
    setContentHandler(std::move(withContentHandler));
    setBestAttemptContent(std::make_shared<platform::MutableNotificationContent>(request.content));
    const auto payload =
        CVNNotificationParser::parseNotificationPayloadDictionary(request.content.userInfo);
    if (!payload) return;
    loadStoreAndProcess(payload);
    // Doesn't wait for the store.
    removeDuplicateNotificationFromTray(payload);
}

void CVNNotificationServiceExtension::loadStoreAndProcess(const Payload& payload) {
    const Value appGroup = CVNPushPreferencesManager::getCorvalenAppGroup();
    CVNPushCoreDataController& store = CVNPushCoreDataController::sharedInstance();
    if (store.storeLoaded()) {
        processThePayload(payload);
        return;
    }
    store.loadStoreAtPath(CVNPushFileUtility::appGroupURLWithAppGroup(appGroup),
                          [this, payload](const foundation::Failure& error) {
                              if (error) {
                                  // The missing "not" is the message as it must read.
                                  log(LogLevel::error, kReceipt,
                                      "Could Initialize the Corvalen SDK due to exception");
                                  return;
                              }
                              log(LogLevel::info, kReceipt, "Store Loaded");
                              processThePayload(payload);
                          });
}

void CVNNotificationServiceExtension::processThePayload(const Payload& payload) {
    CVNPushEventRecorder::recordNotificationDeliveryEventWithId(
        kEventNotificationDelivered, kEventTypeSystem, payload, kGatewaySourceAPNS,
        kCampaignTypeNormal);
    auto operation = CVNNotificationOperation::initWithAPNSContent(
        bestAttemptContent(), payload,
        [this](const Payload& prepared, const CVNNotificationOperation::Content& content) {
            if (const ContentHandler handler = contentHandler()) handler(content->snapshot());
            CVNPushEventRecorder::recordNotificationDisplayedOnTrayWithPayload(prepared);
        });
    setNotificationOperation(operation);
    CVNNotificationQueue::sharedInstance().addNotificationOperation(std::move(operation));
    platform::current().dispatch->afterMain(
        kEventFlushDelay, [] { CVNPushCorvalenHandler::sharedInstance().processEventsManually(); });
}

void CVNNotificationServiceExtension::serviceExtensionTimeWillExpire() {
    if (const auto operation = notificationOperation(); operation && !operation->isFinished()) {
        operation->cancel();
        setNotificationOperation(nullptr);
    }
    const auto content = bestAttemptContent();
    if (const ContentHandler handler = contentHandler(); handler && content) {
        handler(content->snapshot());
    }
}

void CVNNotificationServiceExtension::removeDuplicateNotificationFromTray(const Payload& payload) {
    platform::UserNotificationCenter& center = *platform::current().notificationCenter;
    center.getDeliveredNotifications([payload, &center](
                                         const std::vector<DeliveredNotification>& delivered) {
        guard("-[CVNNotificationServiceExtension removeDuplicateNotificationFromTray:]",
              "Could not replace the notification due to exception: %@", [&] {
                  for (const DeliveredNotification& notification : delivered) {
                      const auto older = CVNNotificationParser::parseNotificationPayloadDictionary(
                          notification.request.content.userInfo);
                      if (older && isReplacedBy(*older, *payload)) {
                          center.removeDeliveredNotifications({notification.request.identifier});
                      }
                  }
              });
    });
}

CVNNotificationServiceExtension::ContentHandler CVNNotificationServiceExtension::contentHandler()
    const {
    const std::lock_guard lock(mutex_);
    return contentHandler_;
}

void CVNNotificationServiceExtension::setContentHandler(ContentHandler handler) {
    const std::lock_guard lock(mutex_);
    contentHandler_ = std::move(handler);
}

platform::MutableNotificationContentRef CVNNotificationServiceExtension::bestAttemptContent()
    const {
    const std::lock_guard lock(mutex_);
    return bestAttemptContent_;
}

void CVNNotificationServiceExtension::setBestAttemptContent(
    platform::MutableNotificationContentRef content) {
    const std::lock_guard lock(mutex_);
    bestAttemptContent_ = std::move(content);
}

std::shared_ptr<CVNNotificationOperation> CVNNotificationServiceExtension::notificationOperation()
    const {
    const std::lock_guard lock(mutex_);
    return notificationOperation_;
}

void CVNNotificationServiceExtension::setNotificationOperation(
    std::shared_ptr<CVNNotificationOperation> operation) {
    const std::lock_guard lock(mutex_);
    notificationOperation_ = std::move(operation);
}

}  // namespace tavrolin
