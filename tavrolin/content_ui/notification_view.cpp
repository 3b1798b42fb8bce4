#include "tavrolin/content_ui/notification_view.h"

#include <utility>
#include <vector>

#include "tavrolin/content_ui/notification_view_helper.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"
#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin {

std::shared_ptr<ui::View> NotificationView::initWithNib() {
    auto root = ui::loadInterfaceFile(nibName(), platform::current().bundles->library());
    return dynamic_cast<NotificationView*>(root.get()) != nullptr ? std::move(root) : nullptr;
}

void NotificationView::loadWithSuperView(ui::View& container) {
    eventData_ = foundation::Value::dictionary();
    const std::vector<std::shared_ptr<ui::View>> before = container.subviews();
    for (const auto& view : before)
        view->removeFromSuperview();
    container.addSubview(shared_from_this());
    ui::pinEdgesToSuperview(*this);
}

void NotificationView::configureNotification() {
    notificationPayload_ = CVNNotificationViewHelper::getNotificationPayloadModel();
    notificationIcon_ = CVNNotificationViewHelper::getNotificationImageIcon();
}

const CVNPayload& NotificationView::cvnPayload() const {
    static const auto* nothing = new CVNPayload;
    return notificationPayload_ && notificationPayload_->cvnPayload
               ? *notificationPayload_->cvnPayload
               : *nothing;
}

const CVNUi& NotificationView::cvnUi() const {
    static const auto* nothing = new CVNUi;
    return notificationPayload_ && notificationPayload_->cvnUi ? *notificationPayload_->cvnUi
                                                               : *nothing;
}

void NotificationView::fillSlot(ui::View& slot, std::string_view className) {
    slot.setHidden(false);
    if (const auto component = makeNotificationView<NotificationView>(className))
        place(*component, slot);
}

void NotificationView::place(NotificationView& view, ui::View& slot) {
    view.loadWithSuperView(slot);
    view.configureNotification();
}

}  // namespace tavrolin
