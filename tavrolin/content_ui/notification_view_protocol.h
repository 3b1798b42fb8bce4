#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "tavrolin/foundation/value.h"
#include "tavrolin/ui/view.h"

namespace tavrolin {

// What components report: a dictionary with what is to happen and, for some, data of their own.
inline constexpr std::string_view kCustomPNButtonInteraction = "eventData";
inline constexpr std::string_view kCustomPNInteractionData = "interaction";

// Values of kCustomPNButtonInteraction; others are ignored.
inline constexpr std::int64_t kInteractionTap = 1;
inline constexpr std::int64_t kInteractionClose = 2;
inline constexpr std::int64_t kInteractionRemove = 3;

/// What every layout and every component offers, called in this order. Main thread.
class CVNNotificationViewProtocol {
public:
    virtual ~CVNNotificationViewProtocol() = default;

    /// Makes the view that its interface file describes, the first in it; nothing when that is no
    /// such view. Raises `foundation::Exception` when the file is missing or broken.
    virtual std::shared_ptr<ui::View> initWithNib() = 0;
    /// Places it inside the view, instead of what was there.
    virtual void loadWithSuperView(ui::View& container) = 0;
    /// Fills it with the notification that CVNNotificationViewHelper holds.
    virtual void configureNotification() = 0;
};

/// Where components report to. Both do nothing where they are not implemented. Main thread.
class CVNCustomPushNotificationInteractionDelegate {
public:
    virtual ~CVNCustomPushNotificationInteractionDelegate() = default;

    /// A component asks for a tap, a close or a removal.
    virtual void handleCustomPushNotificationInteraction(const foundation::Value& /*data*/) {}
    /// A button inside the view was pressed.
    virtual void handleActionButtonInteraction(const foundation::Value& /*data*/) {}
};

}  // namespace tavrolin
