#include "tavrolin/actions/action_button_helper.h"

#include <string>
#include <utility>

#include "tavrolin/actions/local_notification_scheduler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/pasteboard.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Value;
using Helper = CVNActionButtonHelper;

void Helper::copyPromoCode(const Value& code) {
    guard("+[CVNActionButtonHelper copyPromoCode:]", "Not able to copy code due to exception: %@",
          [&] { platform::current().pasteboard->setString(code.string()); });
}

Helper::Payload Helper::recordReplyAndHandleReplyTextWithResponse(
    const platform::NotificationResponse& response, const Payload& andPayload) {
    guard("+[CVNActionButtonHelper recordReplyAndHandleReplyTextWithResponse:andPayload:]",
          "Unable to record the reply event or update the customPayload with reply data due to "
          "exception: %@",
          [&] {
              Value eventData = Value::dictionary();
              if (response.userText) {
                  const Value text(*response.userText);
                  eventData.set(kEventDataPNReplyText, text);
                  if (andPayload) andPayload->cvnCustomPayload.set(kEventDataPNReplyText, text);
              }
              CVNPushEventRecorder::recordNotificationRepliedEventWithName(
                  kEventNameReply, kEventTypeCustom, andPayload, eventData);
          });
    return andPayload;
}

void Helper::configureSnoozeNotificationWith(const Payload& payload,
                                             platform::NotificationContent notification,
                                             std::int64_t andActionIndex) {
    guard("+[CVNActionButtonHelper configureSnoozeNotificationWith:notification:andActionIndex:]",
          "Unable to schedule notification for snooze due to exception: %@", [&] {
              const auto button =
                  payload && payload->cvnPayload
                      ? recordAtIndex(payload->cvnPayload->actionButton, andActionIndex)
                      : nullptr;
              const Value config = button ? button->actionConfig : Value();
              const Value& interval = config[kPNActionButtonConfigSnoozeInterval];
              const Value seconds = interval ? interval : Value(kPNDefaultSnoozeInterval);
              CVNLocalNotificationScheduler::sheduleNotificationWithUniqueIdentifier(
                  CVNLocalNotificationScheduler::requestIdentifier(payload),
                  std::move(notification), static_cast<double>(seconds.integerValue()), {});
          });
}

bool Helper::checkAppOpenOnActionButtonClick(const CVNActionButton& button) {
    bool opens = false;
    guard("+[CVNActionButtonHelper checkAppOpenOnActionButtonClick:]",
          "Not able to open app due to exception: %@",
          [&] { opens = button.actionConfig[kPNOpenAppAction].boolValue(); });
    return opens;
}

bool Helper::checkAppOpenOnReplyActionButtonClick(const CVNReplyActionButton& /*button*/) {
    return false;
}

}  // namespace tavrolin
