#pragma once

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin {

/// The downloaded picture, as high as it is at the view's width. Outlets: imageView,
/// imageHeightConstraint, topHeaderImageView (a hairline above the picture, shown with it).
class CVNImageComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNImageComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;
    void layoutSubviews() override;

private:
    ui::ImageView* imageView_ = nullptr;
    ui::View* topHeaderImageView_ = nullptr;
    ui::LayoutConstraint* imageHeightConstraint_ = nullptr;
};

}  // namespace tavrolin
