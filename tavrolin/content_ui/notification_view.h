#pragma once

#include <memory>
#include <string_view>

#include "tavrolin/content_ui/notification_view_protocol.h"
#include "tavrolin/foundation/class_registry.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/ui/image.h"
#include "tavrolin/ui/view.h"

namespace tavrolin {

/// What layouts and components have in common: they come from the interface file that bears their
/// class's name, and show the notification that CVNNotificationViewHelper holds. Main thread.
class NotificationView : public ui::View, public CVNNotificationViewProtocol {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;

    /// The interface file's name.
    std::string_view nibName() const { return className(); }
    std::shared_ptr<ui::View> initWithNib() override;
    void loadWithSuperView(ui::View& container) override;
    void configureNotification() override;

    /// What it reports; empty after each `loadWithSuperView`.
    const foundation::Value& eventData() const { return eventData_; }
    // Both as they were at the last `configureNotification`.
    const Payload& notificationPayload() const { return notificationPayload_; }
    const std::shared_ptr<ui::Image>& notificationIcon() const { return notificationIcon_; }

protected:
    // The payload's sections; an empty one where it has none.
    const CVNPayload& cvnPayload() const;
    const CVNUi& cvnUi() const;
    /// Shows the slot and puts a component of that class into it. A class that nobody registered
    /// leaves it empty; a broken interface file raises.
    static void fillSlot(ui::View& slot, std::string_view className);
    /// Puts the view into the slot and fills it.
    static void place(NotificationView& view, ui::View& slot);

    foundation::Value eventData_ = foundation::Value::dictionary();

private:
    Payload notificationPayload_;
    std::shared_ptr<ui::Image> notificationIcon_;
};

/// A view of that class, made from its interface file. Null when no such class is registered, or
/// the class or the file's first view is no `T`. Raises `foundation::Exception` when the file is
/// missing or broken.
template <class T>
std::shared_ptr<T> makeNotificationView(std::string_view className) {
    const auto owner = foundation::ClassRegistry<ui::View>::makeInstance(className);
    auto* const view = dynamic_cast<T*>(owner.get());
    return view == nullptr ? nullptr : std::dynamic_pointer_cast<T>(view->initWithNib());
}

}  // namespace tavrolin
