#pragma once

#include "tavrolin/content_ui/layouts/base_layout_view.h"
#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin {

/// A picture with the texts on it. Outlets: headerComponentTopConstraint, which keeps the header at
/// the top where there is no picture, and the veil that lies between the two where the payload has
/// no settings of the layout.
class CVNLayout23 : public MediaLayoutView {
public:
    std::string_view className() const override { return "CVNLayout23"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;
    /// Paints what lies behind the texts: the payload's colour or gradient, else a veil.
    void layoutSubviews() override;

private:
    void paintHeader();
    void paintHeaderGradient();

    ui::View* veil_ = nullptr;
    ui::LayoutConstraint* headerComponentTopConstraint_ = nullptr;
};

}  // namespace tavrolin
