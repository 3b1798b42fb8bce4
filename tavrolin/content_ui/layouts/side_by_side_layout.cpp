#include "tavrolin/content_ui/layouts/side_by_side_layout.h"

#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

void CVNLayout24::connect(ui::Connections& connections) {
    MediaLayoutView::connect(connections);
    connections.view("horizontalStackView", horizontalStackView_);
    connections.view("mediaComponentParentContainer", mediaComponentParentContainer_);
    connections.constraint("mediaLeadingConstraint", mediaLeadingConstraint_);
    connections.constraint("mediaTrailingConstraint", mediaTrailingConstraint_);
}

void CVNLayout24::configureNotification() {
    compose("-[CVNLayout24 configureNotification]", "Could not load layout22 due to exception  %@",
            [this] {
                setupView();
                loadHeaderComponent();
                if (hasMediaFile()) {
                    loadMediaComponent();
                } else {
                    mediaComponentParentContainer_->setHidden(true);
                }
                if (hasRating()) loadRatingComponent();
                if (hasActionButtons()) loadActionButtonComponent();
            });
}

void CVNLayout24::loadMediaComponent() {
    mediaComponentParentContainer_->setHidden(false);
    MediaLayoutView::loadMediaComponent();
}

void CVNLayout24::setupView() {
    static constexpr std::int64_t kRight = 2;
    if (cvnUi().cvnLui["img"]["p"].integerValue() != kRight) return;
    mediaLeadingConstraint_->setConstant(0);
    mediaTrailingConstraint_->setConstant(16);
    horizontalStackView_->setSemanticContentAttribute(
        ui::SemanticContentAttribute::forceRightToLeft);
}

}  // namespace tavrolin
