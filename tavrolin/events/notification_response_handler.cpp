#include "tavrolin/events/notification_response_handler.h"

#include <utility>

#include "tavrolin/actions/action_button_helper.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Value;
using platform::NotificationResponse;
using Handler = CVNNotificationResponseHandler;
using Preferences = CVNPushPreferencesManager;

namespace {

constexpr double kClickDelay = 1;  // seconds

Handler::Payload payloadOf(const NotificationResponse& response) {
    return CVNNotificationParser::parseNotificationPayloadDictionary(
        response.notification.request.content.userInfo);
}

// The button at the index. An index equal to the count raises, deliberately; null for one beyond
// it, and for a payload without buttons.
foundation::Ref<CVNActionButton> pressedButton(const Handler::Payload& payload,
                                               std::int64_t index) {
    if (!payload->cvnPayload) return nullptr;
    const auto& buttons = payload->cvnPayload->actionButton;
    if (recordCount(buttons) < index) return nullptr;
    return recordAtIndex(buttons, index);
}

void copyTextOf(const CVNActionButton& button) {
    const Value& config = button.actionConfig;
    CVNActionButtonHelper::copyPromoCode(
        config.isDictionary() ? config[kPNActionButtonConfigCopyText] : Value());
}

// What a copying or a replying button does before its click. The payload that the click has.
Handler::Payload performSideEffect(const CVNActionButton& button,
                                   const NotificationResponse& response,
                                   const Handler::Payload& payload) {
    switch (foundation::integerOrZero(button.actionType)) {
        case kActionButtonTypeCopy:
            copyTextOf(button);
            return payload;
        case kActionButtonTypeReply:
            return CVNActionButtonHelper::recordReplyAndHandleReplyTextWithResponse(response,
                                                                                    payload);
        default:
            return payload;
    }
}

// The notification itself was opened, perhaps after something was tapped in its expanded view.
void handleDefaultAction(const Value& deeplink, const Handler::Payload& payload,
                         const NotificationResponse& response,
                         const Handler::Completion& completion) {
    const CVNSharedUtility& utility = CVNSharedUtility::sharedInstance();
    if (utility.isActionButtonTapped()) {
        Handler::handleActionButtonInteraction(Preferences::getActionButtonIndex(), deeplink,
                                               response, completion);
        return;
    }
    const bool isCarouselTapped = utility.isCarouselTapped();
    Handler::handleClickEventWith(deeplink, payload, completion);
    if (isCarouselTapped) Preferences::removeCarouselIndex();
}

// A button of the notification's menu was pressed. Snooze is a click here: deliberate.
void handleMenuAction(const Handler::Payload& payload, const NotificationResponse& response,
                      const Handler::Completion& completion) {
    const std::int64_t index = Value(response.actionIdentifier).integerValue();
    const auto button = pressedButton(payload, index);
    if (!button) return;
    const Handler::Payload clicked = performSideEffect(*button, response, payload);
    Handler::handleClickEventWith(button->actionDeeplink, clicked, completion);
}

}  // namespace

void Handler::handleNotificationResponse(const NotificationResponse& response,
                                         const Completion& withCompletion) {
    guard("+[CVNNotificationResponseHandler handleNotificationResponse:withCompletion:]",
          "Could not handle Notification response due to exception: %@", [&] {
              const Payload model = payloadOf(response);
              if (!model) return;
              const CVNSharedUtility& utility = CVNSharedUtility::sharedInstance();
              const Value deeplink = utility.getNotificationDeeplink(*model);
              const Payload payload = utility.getRatingNotificationPayload(model);
              if (response.actionIdentifier == platform::kDismissActionIdentifier) return;
              if (response.actionIdentifier == platform::kDefaultActionIdentifier) {
                  handleDefaultAction(deeplink, payload, response, withCompletion);
              } else {
                  handleMenuAction(payload, response, withCompletion);
              }
          });
}

void Handler::handleRemoteNotificationResponse(const Value& payload,
                                               const Completion& withCompletion) {
    guard("+[CVNNotificationResponseHandler handleRemoteNotificationResponse:withCompletion:]",
          "Could not handle Notification response due to exception: %@", [&] {
              const Payload model =
                  CVNNotificationParser::parseNotificationPayloadDictionary(payload);
              if (!model) return;
              handleClickEventWith(model->cvnPayload ? model->cvnPayload->deeplink : Value(), model,
                                   withCompletion);
          });
}

void Handler::handleActionButtonInteraction(const Value& index, const Value& deeplink,
                                            const NotificationResponse& notificationResponse,
                                            const Completion& withCompletion) {
    struct Consumed {
        ~Consumed() { Preferences::removeActionButtonIndex(); }
    } const consumed;
    const Payload payload = payloadOf(notificationResponse);
    if (!payload) return;
    const std::int64_t position = index.integerValue();
    const auto button = pressedButton(payload, position);
    if (!button) return;
    if (foundation::integerOrZero(button->actionType) == kActionButtonTypeSnooze) {
        // No click: the notification comes back.
        CVNActionButtonHelper::configureSnoozeNotificationWith(
            payload, notificationResponse.notification.request.content, position);
        return;
    }
    handleClickEventWith(deeplink, performSideEffect(*button, notificationResponse, payload),
                         withCompletion);
}

void Handler::handleClickEventWith(const Value& deeplink, const Payload& andPayload,
                                   const Completion& withCompletion) {
    Preferences::setApnClickLink(deeplink);
    updateAttributionParameters(
        andPayload && andPayload->cvnPayload ? andPayload->cvnPayload->cvnAttribution : nullptr);
    recordNotificationClickedEventWithPayload(andPayload);
    CVNPushCorvalenHandler::sharedInstance().handleDeeplinkURLString(
        deeplink, andPayload ? andPayload->toNSDictionary() : Value(), withCompletion);
}

void Handler::recordNotificationClickedEventWithPayload(const Payload& payload) {
    platform::current().dispatch->afterMain(kClickDelay, [payload] {
        CVNPushEventRecorder::recordNotificationClickedEventWithId(kEventNotificationClicked,
                                                                   kEventTypeSystem, payload);
    });
}

void Handler::updateAttributionParameters(
    const foundation::Ref<CVNAttributionParameter>& attribution) {
    const Value received = attribution ? attribution->attrIdentity : Value();
    if (CVNPushCorvalenHandler::sharedInstance().checkIfAttributionNeedsToBeUpdated(
            Preferences::getUserIdentity().lowercaseString(), received.lowercaseString())) {
        Preferences::setUserNotificationAttribution(attribution ? attribution->attrParams
                                                                : Value());
    }
}

}  // namespace tavrolin
