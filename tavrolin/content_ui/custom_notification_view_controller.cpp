#include "tavrolin/content_ui/custom_notification_view_controller.h"

#include <utility>

#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/components/carousel.h"
#include "tavrolin/content_ui/layout_utility.h"
#include "tavrolin/content_ui/layouts/base_layout_view.h"
#include "tavrolin/content_ui/notification_view_helper.h"
#include "tavrolin/content_ui/view_classes.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/class_registry.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/gesture_recognizer.h"

namespace tavrolin {

using foundation::Value;
using Controller = CVNCustomNotificationViewController;

// What happens to the notification; its buttons are in
// custom_notification_view_controller_response.cpp.

// --- Surroundings

void Controller::setExtensionContext(std::shared_ptr<platform::ExtensionContext> context) {
    extensionContext_ = std::move(context);
}

const std::shared_ptr<platform::ExtensionContext>& Controller::extensionContext() const {
    return extensionContext_;
}

void Controller::setCustomView(ui::View* view) {
    customView_ = view;
}

ui::View* Controller::customView() {
    return customView_ != nullptr ? customView_ : &view();
}

const platform::Bundle& Controller::bundle() const {
    return platform::current().bundles->main();
}

// --- Life of the view

void Controller::viewDidLoad() {
    ViewController::viewDidLoad();
    log(LogLevel::system, "-[CVNCustomNotificationViewController viewDidLoad]",
        "✅ ✅ ✅ 👍 Tavrolin NCE Called ✅ ✅ ✅");
    registerViewClasses();
    CVNSharedUtility::sharedInstance().loadCorvalenPushStore();
    CVNPushCorvalenHandler::sharedInstance().loadCorvalenStore();
    addTapGestureRecognizer();
}

void Controller::viewDidLayoutSubviews() {
    ViewController::viewDidLayoutSubviews();
    applyBackgroundColor();
}

void Controller::viewWillDisappear(bool animated) {
    ViewController::viewWillDisappear(animated);
    if (!CVNNotificationViewHelper::getNotificationPayloadModel()) return;
    auto* const carousel =
        dynamic_cast<CarouselComponent*>(findCarouselComponentInViewHierarchy(view()));
    if (carousel != nullptr) carousel->stopCarouselTimer();
}

void Controller::traitCollectionDidChange(const ui::TraitCollection* previous) {
    static constexpr std::string_view kOperation =
        "-[CVNCustomNotificationViewController traitCollectionDidChange:]";
    static constexpr int kFirstVersionWithDarkMode = 13;
    ViewController::traitCollectionDidChange(previous);
    bool dark = false;
    if (platform::current().systemVersion < kFirstVersionWithDarkMode) {
        log(LogLevel::info, kOperation,
            "The device is in light mode since the device did not support dark mode.");
    } else {
        if (!traitCollection().hasDifferentColorAppearanceComparedTo(previous)) return;
        dark = traitCollection().userInterfaceStyle == ui::UserInterfaceStyle::dark;
        log(LogLevel::info, kOperation,
            dark ? "The device is in dark mode." : "The device is in light mode.");
    }
    CVNSharedUtility::setIsDarkMode(dark);
}

// --- A notification

void Controller::didReceiveNotification(const platform::DeliveredNotification& notification) {
    didReceiveCustomNotification(notification);
}

void Controller::didReceiveCustomNotification(const platform::DeliveredNotification& notification) {
    currentNotification_ = notification;
    loadTemplateBasedOnNotification(CVNNotificationParser::parseNotificationPayloadDictionary(
        notification.request.content.userInfo));
}

void Controller::loadTemplateBasedOnNotification(const Payload& model) {
    static constexpr std::string_view kOperation =
        "-[CVNCustomNotificationViewController loadTemplateBasedOnNotification:]";
    if (!model) return;
    guard(kOperation, "Could not load template based on layout id due to exception: %@", [&] {
        const auto name = CVNLayoutUtility::getNotificationLayoutClassName(model);
        if (!name || !foundation::ClassRegistry<ui::View>::isRegistered(*name)) {
            log(LogLevel::fatal, kOperation,
                formatMessage("Class '%@' not found.", {name ? Value(*name) : Value()}));
            return;
        }
        baseNotificationView_ = makeNotificationView<CVNBaseLayoutView>(*name);
        if (!baseNotificationView_) return;
        CVNNotificationViewHelper::setNotificationImageIcon(getNotificationIcon());
        CVNNotificationViewHelper::setNotificationExtenstionContent(extensionContext_);
        CVNNotificationViewHelper::setNotificationPayloadModel(model);
        CVNNotificationViewHelper::setCustomNotificationDelegate(weak_from_this().lock());
        baseNotificationView_->loadWithSuperView(*customView());
        baseNotificationView_->configureNotification();
    });
}

std::shared_ptr<ui::Image> Controller::getNotificationIcon() {
    const Value name = CVNPlistUility::getNotificationIconName();
    if (!name.isString()) return nullptr;
    return ui::Image::named(name.string(), bundle(), traitCollection().displayScale);
}

void Controller::applyBackgroundColor() {
    const Payload model = CVNNotificationViewHelper::getNotificationPayloadModel();
    if (!baseNotificationView_ || !model || !model->cvnUi) return;
    const CVNUi& settings = *model->cvnUi;
    guard("-[CVNCustomNotificationViewController applyBackgroundColor]",
          "Could not load template based on layout id due to exception: %@", [&] {
              if (settings.backgroundColor) {
                  customView()->setBackgroundColor(
                      CVNColorUtility::colorFromHexString(settings.backgroundColor));
              } else if (settings.backgroundGradientColor) {
                  CVNColorUtility::removeBackgroundGradients(*customView());
                  CVNColorUtility::addBackgroundGradientColor(*customView(),
                                                              settings.backgroundGradientColor);
              }
          });
}

// --- Taps

void Controller::addTapGestureRecognizer() {
    auto recognizer =
        std::make_shared<ui::TapGestureRecognizer>([weak = weak_from_this()](ui::View& /*tapped*/) {
            if (const auto controller = weak.lock()) controller->handleSingleTap();
        });
    recognizer->setShouldReceiveTouch([weak = weak_from_this()](platform::Point point) {
        const auto controller = weak.lock();
        return controller && controller->gestureRecognizerShouldReceiveTouch(point);
    });
    view().addGestureRecognizer(std::move(recognizer));
}

bool Controller::gestureRecognizerShouldReceiveTouch(platform::Point point) {
    const ui::View* const carousel = findCarouselComponentInViewHierarchy(view());
    return carousel == nullptr ||
           !carousel->convertRect(carousel->bounds(), view()).contains(point);
}

ui::View* Controller::findCarouselComponentInViewHierarchy(ui::View& view) {
    if (dynamic_cast<CarouselComponent*>(&view) != nullptr) return &view;
    for (const auto& subview : view.subviews()) {
        if (ui::View* const found = findCarouselComponentInViewHierarchy(*subview)) return found;
    }
    return nullptr;
}

void Controller::handleSingleTap() {
    performPushNotificationTap();
}

void Controller::handleCustomPushNotificationInteraction(const Value& data) {
    if (!data.isDictionary()) return;
    switch (foundation::integerOrZero(data[kCustomPNButtonInteraction])) {
        case kInteractionTap:
            return performPushNotificationTap();
        case kInteractionClose:
            return performPushNotificationClose();
        case kInteractionRemove:
            return performPushNotificationRemove();
        default:
            return;
    }
}

void Controller::handleActionButtonInteraction(const Value& /*data*/) {
    performPushNotificationTap();
}

// --- What is asked of the system

namespace {

// The first version of the system whose extension context takes requests.
bool contextTakesRequests() {
    return platform::current().systemVersion >= 12;
}

}  // namespace

void Controller::performPushNotificationTap() {
    if (extensionContext_ && contextTakesRequests())
        extensionContext_->performNotificationDefaultAction();
}

void Controller::performPushNotificationClose() {
    if (extensionContext_ && contextTakesRequests())
        extensionContext_->dismissNotificationContentExtension();
}

void Controller::performPushNotificationRemove() {
    if (!currentNotification_) return;
    performPushNotificationClose();
    platform::current().notificationCenter->removeDeliveredNotifications(
        {currentNotification_->request.identifier});
}

void Controller::recordNotificationClickedEventWithPayload(const Payload& payload) {
    CVNPushEventRecorder::recordNotificationClickedEventWithId(kEventNotificationClicked,
                                                               kEventTypeSystem, payload);
}

}  // namespace tavrolin
