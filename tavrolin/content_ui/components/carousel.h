#pragma once

#include "tavrolin/content_ui/components/base_component_view.h"

namespace tavrolin {

/// What the controller, the layouts and the media slot know of a carousel. It keeps the taps on it
/// to itself.
class CarouselComponent : public CVNBaseComponentView {
public:
    /// One of the notification's own buttons was pressed.
    virtual void didReceiveCarouselButtonResponse(const foundation::Value& actionIdentifier) = 0;
    /// The view is about to disappear. For carousels that turn by themselves.
    virtual void stopCarouselTimer() {}
};

}  // namespace tavrolin
