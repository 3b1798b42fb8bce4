#pragma once

#include <vector>

#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::platform {

/// What a content extension may ask of the system. Main thread.
class ExtensionContext {
public:
    virtual ~ExtensionContext() = default;

    /// Opens the app as if the user had tapped the notification.
    virtual void performNotificationDefaultAction() = 0;
    /// Collapses the expanded view.
    virtual void dismissNotificationContentExtension() = 0;
    /// The buttons below the view; at first those of the notification's category.
    virtual std::vector<NotificationAction> notificationActions() = 0;
    virtual void setNotificationActions(std::vector<NotificationAction> actions) = 0;
};

/// What a content extension tells the system when an action was pressed. The numbers are the
/// platform's.
enum class ContentExtensionResponseOption : int {
    doNotDismiss = 0,
    dismiss = 1,
    dismissAndForwardAction = 2
};

}  // namespace tavrolin::platform
