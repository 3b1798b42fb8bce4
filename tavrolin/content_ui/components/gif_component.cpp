#include "tavrolin/content_ui/components/gif_component.h"

#include <optional>
#include <utility>

#include "tavrolin/content_ui/components/fitting_height.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/service_extension/gif_image_utility.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

void CVNGifComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("animatedImageView", animatedImageView_);
    connections.view("topHeaderView", topHeaderView_);
    connections.constraint("imageHeightConstraint", imageHeightConstraint_);
}

void CVNGifComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    guard("-[CVNGifComponent configureNotification]", "Could not set Gif due to exception  %@",
          [this] {
              const foundation::Value& path = cvnPayload().mediaURLPath;
              if (!path) return;
              const auto url = foundation::URL::fileURLWithPath(path.string());
              auto picture = CVNGifImageUtility::animatedImageWithAnimatedGIFURL(url);
              animatedImageView_->setImage(
                  picture
                      ? ui::Image::animated(std::move(picture->source), std::move(picture->frames),
                                            picture->duration, url.lastPathComponent())
                      : nullptr);
          });
}

void CVNGifComponent::layoutSubviews() {
    if (animatedImageView_ == nullptr || !animatedImageView_->image()) return;
    const platform::Size size = animatedImageView_->image()->size();
    setFittingHeight(*imageHeightConstraint_, animatedImageView_->bounds().width,
                     size.width / size.height);
    topHeaderView_->setHidden(false);
}

}  // namespace tavrolin
