#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/content_extension/extension_requests.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/user_notification_center.h"
#include "tavrolin/ui/window.h"

namespace tavrolin::adapters::asio {
class AsioDispatch;
}

namespace tavrolin {
class CVNCustomNotificationViewController;
}

namespace tavrolin::device {

/// A delivered notification in the sample app's content extension, on a screen that nobody sees,
/// and what the user does with it. Main thread, outside the main queue, which it runs.
class ExpandedView {
public:
    struct Surroundings {
        double width = 0;
        ui::TraitCollection traits;
    };

    /// `requests` is filled by the ports of this process as well.
    ExpandedView(adapters::asio::AsioDispatch& dispatch,
                 platform::DeliveredNotification notification,
                 std::vector<platform::NotificationAction> actions, ExtensionRequests& requests);
    ~ExpandedView();
    ExpandedView(const ExpandedView&) = delete;
    ExpandedView& operator=(const ExpandedView&) = delete;

    /// Shows it, and waits until it has settled: its own short set-up delays are over.
    void show(const Surroundings& surroundings);
    /// A step of expand_order.h, and what it sets going but for delays. Throws DeviceError for a
    /// view that isn't there.
    void take(const foundation::Value& step);
    /// Gives responses that were not answered the time that they may still take.
    void awaitResponses();

    /// What is shown now, as it is printed: "layout", "size", with "tree" when it is wanted.
    foundation::Value description(bool wantsTree);
    /// With what it asked of the system and answered: all of Expansion's view.
    foundation::Value completed(const foundation::Value& description);
    foundation::Value story() const;

    ui::Window& window() { return *window_; }
    std::vector<platform::NotificationAction> actions() { return context_->notificationActions(); }

private:
    struct Chapter;

    void perform(const std::function<void()>& work);
    void tap(platform::Point point);
    void tapOn(const std::string& name);
    void respond(const foundation::Value& step);
    void wait(double seconds);
    bool hasOpenResponse() const;

    adapters::asio::AsioDispatch& dispatch_;
    platform::DeliveredNotification notification_;
    ExtensionRequests& requests_;
    std::shared_ptr<SystemExtensionContext> context_;
    std::shared_ptr<CVNCustomNotificationViewController> controller_;
    std::optional<ui::Window> window_;
    std::vector<std::shared_ptr<Chapter>> chapters_;
    bool isAwaiting_ = false;
};

}  // namespace tavrolin::device
