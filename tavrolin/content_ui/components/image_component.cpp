#include "tavrolin/content_ui/components/image_component.h"

#include "tavrolin/content_ui/components/fitting_height.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

void CVNImageComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("imageView", imageView_);
    connections.view("topHeaderImageView", topHeaderImageView_);
    connections.constraint("imageHeightConstraint", imageHeightConstraint_);
}

void CVNImageComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    guard("-[CVNImageComponent configureNotification]", "Could not set Image due to exception  %@",
          [this] {
              const foundation::Value& path = cvnPayload().mediaURLPath;
              if (!path) return;
              // The path is taken as a URL's text, unlike an animated picture's: deliberate.
              imageView_->setImage(getImageFromURL(foundation::URL::withString(path.string())));
          });
}

void CVNImageComponent::layoutSubviews() {
    if (imageView_ == nullptr || !imageView_->image()) return;
    const platform::Size size = imageView_->image()->size();
    setFittingHeight(*imageHeightConstraint_, imageView_->bounds().width, size.width / size.height);
    topHeaderImageView_->setHidden(false);
}

}  // namespace tavrolin
