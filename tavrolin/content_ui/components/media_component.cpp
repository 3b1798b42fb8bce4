#include "tavrolin/content_ui/components/media_component.h"

#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/content_ui/components/carousel.h"
#include "tavrolin/content_ui/layout_utility.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

using foundation::Value;

namespace {

constexpr std::string_view kOperation = "-[CVNMediaComponent loadComponentByLayoutId]";

}  // namespace

void CVNMediaComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("mediaContainer", mediaContainer_);
}

void CVNMediaComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    // The message names the header: deliberate.
    guard("-[CVNMediaComponent configureNotification]",
          "Could not load header component due to exception  %@",
          [this] { loadComponentByLayoutId(); });
}

void CVNMediaComponent::loadComponentByLayoutId() {
    const std::string name = componentClassName();
    if (name.empty()) {
        log(LogLevel::info, kOperation,
            "A new media type is introduced which is not supported in current version.");
        return;
    }
    baseContainerView_ = makeNotificationView<CVNBaseComponentView>(name);
    if (!baseContainerView_) return;
    if (!cvnPayload().mediaURLPath && !isCarouselType(cvnPayload().type)) return;
    mediaContainer_->setHidden(false);
    place(*baseContainerView_, *mediaContainer_);
}

// Empty for a type without a component, and for a carousel without pictures.
std::string CVNMediaComponent::componentClassName() const {
    static constexpr std::int64_t kMultiImageLayout = 92;
    const Value& type = cvnPayload().type;
    const bool hasPictures = recordCount(cvnPayload().carousel) > 0;
    if (type == Value(kPnTypeImage)) return "CVNImageComponent";
    if (type == Value(kPnTypeGif)) return "CVNGifComponent";
    if (type == Value(kPnTypeAudio)) return "CVNAudioComponent";
    if (type == Value(kPnTypeVideo)) return "CVNVideoComponent";
    if (type == Value(kPnTypeCarouselLandscape) && hasPictures)
        return "CVNLandscapeCarouselComponent";
    if (type == Value(kPnTypeCarouselPortrait) && hasPictures) {
        const Value& layoutId = cvnUi().layoutId;
        return layoutId.integerValue() == kMultiImageLayout &&
                       CVNLayoutUtility::isLayoutIdSupported(layoutId, type)
                   ? "CVNMultiImageComponent"
                   : "CVNPortraitCarouselComponent";
    }
    return {};
}

void CVNMediaComponent::didReceiveCarouselButtonResponse(const Value& actionIdentifier) {
    const Value& layoutId = cvnUi().layoutId;
    if (!CVNLayoutUtility::isCarouselRoute(layoutId, cvnPayload().type)) return;
    if (auto* const carousel = dynamic_cast<CarouselComponent*>(baseContainerView_.get()))
        carousel->didReceiveCarouselButtonResponse(actionIdentifier);
}

}  // namespace tavrolin
