#include "tavrolin/events/notification_response_service.h"

#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/notification_center.h"
#include "tavrolin/payload/notification_parser.h"

namespace tavrolin {

using foundation::Value;
using Service = CVNNotificationResponseService;

namespace {

constexpr std::string_view kWillPresent =
    "+[CVNNotificationResponseService willPresentForegroundNotification:]";

}  // namespace

void Service::didReceiveNotificationResponse(const platform::NotificationResponse& response,
                                             const Completion& withCompletion) {
    CVNNotificationResponseHandler::handleNotificationResponse(response, withCompletion);
}

void Service::didReceiveRemoteNotification(const Value& payload, const Completion& withCompletion) {
    log(LogLevel::verbose,
        "+[CVNNotificationResponseService didReceiveRemoteNotification:withCompletion:]",
        formatMessage("Did receive silent push notification with payload : %@", {payload}));
    CVNNotificationResponseHandler::handleRemoteNotificationResponse(payload, withCompletion);
}

void Service::willPresentForegroundNotification(
    const platform::DeliveredNotification& notification) {
    const Value& userInfo = notification.request.content.userInfo;
    log(LogLevel::verbose, kWillPresent, "Handle push from foreground");
    log(LogLevel::info, kWillPresent,
        formatMessage("Notification payload received with app in foreground : %@", {userInfo}));
    // As the facade asks it, which calls this room and can't be called from it.
    if (!isFromCorvalen(userInfo, "-[Tavrolin isNotificationFromCorvalen:]")) return;
    const auto model = CVNNotificationParser::parseNotificationPayloadDictionary(userInfo);
    const Value payload = model ? model->toNSDictionary() : Value();
    foundation::NotificationCenter::defaultCenter().postNotificationName(
        kCorvalenNotificationReceived, payload);
    log(LogLevel::info, kWillPresent,
        formatMessage("Corvalen Notification payload received with app in foreground : %@",
                      {payload}));
}

}  // namespace tavrolin
