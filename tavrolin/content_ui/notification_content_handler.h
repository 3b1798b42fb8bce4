#pragma once

#include <functional>
#include <memory>

#include "tavrolin/platform/extension_context.h"
#include "tavrolin/platform/user_notification_center.h"
#include "tavrolin/ui/view.h"

namespace tavrolin {

/// For hosts that keep a view controller of their own: recognises this system's notifications and
/// answers their buttons, but draws nothing. Main thread.
class CVNNotificationContentHandler {
public:
    using Completion = std::function<void(platform::ContentExtensionResponseOption)>;

    static CVNNotificationContentHandler& sharedInstance();

    /// Keeps the view.
    void loadCustomNotificationContentView(std::shared_ptr<ui::View> view);
    const std::shared_ptr<ui::View>& contentView() const { return contentView_; }

    void didReceiveCustomNotification(const platform::DeliveredNotification& notification);
    /// Every button leaves the notification open; a tap on the notification itself opens the app.
    void didReceiveCustomNotificationResponse(const platform::NotificationResponse& response,
                                              const Completion& completionHandler);

private:
    CVNNotificationContentHandler() = default;

    std::shared_ptr<ui::View> contentView_;
};

}  // namespace tavrolin
