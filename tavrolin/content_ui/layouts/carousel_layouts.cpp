#include "tavrolin/content_ui/layouts/carousel_layouts.h"

#include "tavrolin/core/shared_utility.h"

namespace tavrolin {

// The messages of 91 and 92 name another layout than their own, deliberately.

void CVNLayout71::configureNotification() {
    compose("-[CVNLayout71 configureNotification]", "Could not load layout71 due to exception  %@",
            [this] {
                loadHeaderComponent();
                loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (carouselCount() >= 2) loadActionButtonComponent();
            });
}

void CVNLayout72::configureNotification() {
    compose("-[CVNLayout72 configureNotification]", "Could not load layout72 due to exception  %@",
            [this] {
                loadHeaderComponent();
                loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (hasActionButtons()) loadActionButtonComponent();
            });
}

void CVNLayout91::configureNotification() {
    compose("-[CVNLayout91 configureNotification]", "Could not load layout21 due to exception  %@",
            [this] {
                loadHeaderComponent();
                loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (carouselCount() >= 3) loadActionButtonComponent();
            });
}

void CVNLayout92::configureNotification() {
    compose("-[CVNLayout92 configureNotification]", "Could not load layout21 due to exception  %@",
            [this] {
                if (CVNSharedUtility::sharedInstance().isMultiImageLayoutSupportingIconAndText(
                        notificationPayload())) {
                    loadHeaderComponent();
                }
                loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (carouselCount() >= 3) loadActionButtonComponent();
            });
}

void CarouselLayoutView::loadMediaComponent() {
    mediaComponentContainer_->setHidden(false);
    mediaComponent_ = makeNotificationView<CVNMediaComponent>("CVNMediaComponent");
    if (mediaComponent_) place(*mediaComponent_, *mediaComponentContainer_);
}

void CarouselLayoutView::didReceiveCarouselButtonResponse(
    const foundation::Value& actionIdentifier) {
    if (mediaComponent_) mediaComponent_->didReceiveCarouselButtonResponse(actionIdentifier);
}

}  // namespace tavrolin
