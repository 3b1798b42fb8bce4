#include "tavrolin/content_ui/notification_view_helper.h"

#include <utility>

namespace tavrolin {

using Helper = CVNNotificationViewHelper;

Helper& Helper::sharedInstance() {
    static auto* instance = new CVNNotificationViewHelper;
    return *instance;
}

void Helper::setNotificationPayloadModel(Payload model) {
    sharedInstance().notificationPayload_ = std::move(model);
}

Helper::Payload Helper::getNotificationPayloadModel() {
    return sharedInstance().notificationPayload_;
}

void Helper::setNotificationImageIcon(std::shared_ptr<ui::Image> icon) {
    sharedInstance().notificationIcon_ = std::move(icon);
}

std::shared_ptr<ui::Image> Helper::getNotificationImageIcon() {
    return sharedInstance().notificationIcon_;
}

void Helper::setNotificationExtenstionContent(Context context) {
    sharedInstance().cvnExtensionContext_ = std::move(context);
}

Helper::Context Helper::getNotificationExtenstionContent() {
    return sharedInstance().cvnExtensionContext_;
}

void Helper::setCustomNotificationDelegate(const Delegate& delegate) {
    sharedInstance().customNotificationDelegate_ = delegate;
}

Helper::Delegate Helper::getCustomNotificationDelegate() {
    return sharedInstance().customNotificationDelegate_.lock();
}

}  // namespace tavrolin
