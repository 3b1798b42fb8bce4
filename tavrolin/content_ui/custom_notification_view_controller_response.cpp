#include <utility>

#include "tavrolin/actions/action_button_helper.h"
#include "tavrolin/content_ui/custom_notification_view_controller.h"
#include "tavrolin/content_ui/layout_utility.h"
#include "tavrolin/content_ui/layouts/carousel_layouts.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Value;
using platform::ContentExtensionResponseOption;
using Controller = CVNCustomNotificationViewController;

// How the controller answers the notification's own buttons.

namespace {

constexpr std::int64_t kActionButtonTypeDismiss = 3;
constexpr double kReplyDelay = 2;  // seconds until a reply is completed: it is recorded meanwhile

constexpr auto kStayOpen = ContentExtensionResponseOption::doNotDismiss;
constexpr auto kForward = ContentExtensionResponseOption::dismissAndForwardAction;

/// A press on one of the notification's buttons.
struct Press {
    Controller& controller;
    const platform::NotificationResponse& response;
    Controller::Payload model;
    const CVNPayload& payload;
};

void pressOnCarousel(const Press& press) {
    CVNBaseLayoutView* const layout = press.controller.baseNotificationView().get();
    if (dynamic_cast<CVNLayout71*>(layout) == nullptr &&
        dynamic_cast<CVNLayout91*>(layout) == nullptr)
        return;
    static_cast<CarouselLayoutView*>(layout)->didReceiveCarouselButtonResponse(
        press.response.actionIdentifier);
}

/// What the system is to be told, and after how many seconds.
struct Answer {
    ContentExtensionResponseOption option;
    double delay = 0;
};

Answer pressOnReply(const Press& press, const CVNReplyActionButton& reply) {
    if (reply.actionType.integerValue() != kActionButtonTypeReply) return {kForward};
    if (CVNActionButtonHelper::checkAppOpenOnReplyActionButtonClick(reply)) return {kForward};
    press.controller.recordNotificationClickedEventWithPayload(press.model);
    CVNActionButtonHelper::recordReplyAndHandleReplyTextWithResponse(press.response, press.model);
    press.controller.performPushNotificationRemove();
    return {kStayOpen, kReplyDelay};
}

Answer pressOnAction(const Press& press, const CVNActionButton& button, std::int64_t index) {
    switch (button.actionType.integerValue()) {
        case kActionButtonTypeCopy:
            if (CVNActionButtonHelper::checkAppOpenOnActionButtonClick(button)) return {kForward};
            CVNActionButtonHelper::copyPromoCode(
                button.actionConfig[kPNActionButtonConfigCopyText]);
            press.controller.performPushNotificationClose();
            return {kStayOpen};
        case kActionButtonTypeSnooze:
            CVNActionButtonHelper::configureSnoozeNotificationWith(
                press.model, press.response.notification.request.content, index);
            press.controller.performPushNotificationRemove();
            return {kStayOpen};
        case kActionButtonTypeDismiss:
            CVNPushEventRecorder::recordNotificationDismissedEventWithPayload(press.model);
            press.controller.performPushNotificationRemove();
            return {kStayOpen};
        default:
            return {kForward};
    }
}

// Raises for the index that is one past the last button, where that is no reply button's:
// deliberate, since only what is larger counts as unknown.
Answer pressOnButton(const Press& press) {
    const std::int64_t index = Value(press.response.actionIdentifier).integerValue();
    const std::int64_t count = recordCount(press.payload.actionButton);
    if (press.payload.replyButton && index == count)
        return pressOnReply(press, *press.payload.replyButton);
    // Unsigned, so that a negative index is too large as well.
    if (static_cast<std::uint64_t>(count) < static_cast<std::uint64_t>(index)) return {kForward};
    const auto button = recordAtIndex(press.payload.actionButton, index);
    return button ? pressOnAction(press, *button, index) : Answer{kForward};
}

Answer answer(const Press& press, const CVNUi& ui) {
    if (press.response.actionIdentifier.empty()) return {kForward};
    if (CVNLayoutUtility::isCarouselRoute(ui.layoutId, press.payload.type)) {
        pressOnCarousel(press);
        return {kStayOpen};
    }
    return pressOnButton(press);
}

}  // namespace

void Controller::didReceiveNotificationResponse(const platform::NotificationResponse& response,
                                                Completion completionHandler) {
    didReceiveCustomNotificationResponse(response, std::move(completionHandler));
}

void Controller::didReceiveCustomNotificationResponse(
    const platform::NotificationResponse& response, Completion completionHandler) {
    static const auto* noPayload = new CVNPayload;
    static const auto* noUi = new CVNUi;
    guard(
        "-[CVNCustomNotificationViewController "
        "didReceiveCustomNotificationResponse:completionHandler:]",
        "Could not handle notification response due to exception: %@", [&] {
            const Payload model = CVNNotificationParser::parseNotificationPayloadDictionary(
                response.notification.request.content.userInfo);
            if (!model) return;
            const CVNPayload& payload = model->cvnPayload ? *model->cvnPayload : *noPayload;
            const CVNUi& ui = model->cvnUi ? *model->cvnUi : *noUi;
            const Answer given = answer({*this, response, model, payload}, ui);
            if (!completionHandler) return;
            if (given.delay > 0) {
                platform::current().dispatch->afterMain(
                    given.delay,
                    [completionHandler, option = given.option] { completionHandler(option); });
            } else {
                completionHandler(given.option);
            }
        });
}

}  // namespace tavrolin
