#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "tavrolin/content_ui/notification_view_protocol.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/extension_context.h"
#include "tavrolin/platform/user_notification_center.h"
#include "tavrolin/ui/image.h"
#include "tavrolin/ui/window.h"

namespace tavrolin {

class CVNBaseLayoutView;

/// The principal class of a host's content extension, or what it derives from. A host makes it as a
/// shared object, hands it the system's extension context and a view of its interface as
/// `customView` (without one the controller's own view is it), puts it into a `ui::Window`, and
/// passes on what the system calls.
///
/// Main thread. Nothing raises.
class CVNCustomNotificationViewController
    : public ui::ViewController,
      public CVNCustomPushNotificationInteractionDelegate,
      public std::enable_shared_from_this<CVNCustomNotificationViewController> {
public:
    using Completion = std::function<void(platform::ContentExtensionResponseOption)>;
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;

    void setExtensionContext(std::shared_ptr<platform::ExtensionContext> context);
    const std::shared_ptr<platform::ExtensionContext>& extensionContext() const;
    /// Within the controller's view, which owns it.
    void setCustomView(ui::View* view);
    ui::View* customView();

    // --- What the system calls

    void didReceiveNotification(const platform::DeliveredNotification& notification);
    /// The completion is not called for a payload of another system, nor after an error; for a
    /// reply it is called two seconds later.
    void didReceiveNotificationResponse(const platform::NotificationResponse& response,
                                        Completion completionHandler);
    void viewDidLoad() override;
    void viewDidLayoutSubviews() override;
    void viewWillDisappear(bool animated) override;
    void traitCollectionDidChange(const ui::TraitCollection* previous) override;

    // --- What they lead to

    void didReceiveCustomNotification(const platform::DeliveredNotification& notification);
    void didReceiveCustomNotificationResponse(const platform::NotificationResponse& response,
                                              Completion completionHandler);
    void loadTemplateBasedOnNotification(const Payload& model);
    /// The image that the app's settings name, from the bundle that holds the extension; or null.
    std::shared_ptr<ui::Image> getNotificationIcon();
    void addTapGestureRecognizer();
    /// False inside a carousel, which keeps its own taps. `point` is in the controller's view.
    bool gestureRecognizerShouldReceiveTouch(platform::Point point);
    ui::View* findCarouselComponentInViewHierarchy(ui::View& view);
    void handleSingleTap();
    void handleCustomPushNotificationInteraction(const foundation::Value& data) override;
    void handleActionButtonInteraction(const foundation::Value& data) override;
    void performPushNotificationTap();
    void performPushNotificationClose();
    void performPushNotificationRemove();
    void applyBackgroundColor();
    void recordNotificationClickedEventWithPayload(const Payload& payload);

    // --- What it holds

    const std::optional<platform::DeliveredNotification>& currentNotification() const {
        return currentNotification_;
    }
    /// The layout of that notification; null when none could be made.
    const std::shared_ptr<CVNBaseLayoutView>& baseNotificationView() const {
        return baseNotificationView_;
    }
    // The system's own button for playing media: none.
    std::int64_t mediaPlayPauseButtonType() const { return 0; }
    platform::Rect mediaPlayPauseButtonFrame() const { return {}; }
    std::optional<platform::Color> mediaPlayPauseButtonTintColor() const { return std::nullopt; }

protected:
    /// The bundle that holds the class: the extension's own.
    virtual const platform::Bundle& bundle() const;

private:
    std::shared_ptr<platform::ExtensionContext> extensionContext_;
    ui::View* customView_ = nullptr;
    std::optional<platform::DeliveredNotification> currentNotification_;
    std::shared_ptr<CVNBaseLayoutView> baseNotificationView_;
};

}  // namespace tavrolin
