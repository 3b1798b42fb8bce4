#pragma once

#include "tavrolin/content_ui/layouts/base_layout_view.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin {

/// A picture beside the texts, at their left unless the payload wants it at their right. Outlets:
/// horizontalStackView, mediaComponentParentContainer (around the media's slot, with the margins),
/// mediaLeadingConstraint, mediaTrailingConstraint.
class CVNLayout24 : public MediaLayoutView {
public:
    std::string_view className() const override { return "CVNLayout24"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;
    void loadMediaComponent() override;
    /// Puts the picture at its side.
    void setupView();

private:
    ui::StackView* horizontalStackView_ = nullptr;
    ui::View* mediaComponentParentContainer_ = nullptr;
    ui::LayoutConstraint* mediaLeadingConstraint_ = nullptr;
    ui::LayoutConstraint* mediaTrailingConstraint_ = nullptr;
};

}  // namespace tavrolin
