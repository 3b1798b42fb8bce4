#pragma once

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin {

/// The downloaded animated picture, as high as it is at the view's width. Outlets:
/// animatedImageView, imageHeightConstraint, topHeaderView (a hairline above the picture, shown
/// with it).
class CVNGifComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNGifComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;
    void layoutSubviews() override;

private:
    ui::ImageView* animatedImageView_ = nullptr;
    ui::View* topHeaderView_ = nullptr;
    ui::LayoutConstraint* imageHeightConstraint_ = nullptr;
};

}  // namespace tavrolin
