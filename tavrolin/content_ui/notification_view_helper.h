#pragma once

#include <memory>

#include "tavrolin/content_ui/notification_view_protocol.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/extension_context.h"
#include "tavrolin/ui/image.h"

namespace tavrolin {

/// What is on screen now, for every layout and component. Overwritten by each notification that is
/// shown, never cleared. Main thread.
class CVNNotificationViewHelper {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;
    using Context = std::shared_ptr<platform::ExtensionContext>;
    using Delegate = std::shared_ptr<CVNCustomPushNotificationInteractionDelegate>;

    static CVNNotificationViewHelper& sharedInstance();

    static void setNotificationPayloadModel(Payload model);
    static Payload getNotificationPayloadModel();
    static void setNotificationImageIcon(std::shared_ptr<ui::Image> icon);
    static std::shared_ptr<ui::Image> getNotificationImageIcon();
    static void setNotificationExtenstionContent(Context context);
    static Context getNotificationExtenstionContent();
    /// Not owned; null once it is gone.
    static void setCustomNotificationDelegate(const Delegate& delegate);
    static Delegate getCustomNotificationDelegate();

private:
    CVNNotificationViewHelper() = default;

    Payload notificationPayload_;
    std::shared_ptr<ui::Image> notificationIcon_;
    Context cvnExtensionContext_;
    std::weak_ptr<CVNCustomPushNotificationInteractionDelegate> customNotificationDelegate_;
};

}  // namespace tavrolin
