#include "tavrolin/ui/image_view.h"

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/content_fit.h"
#include "tavrolin/ui/drawing.h"
#include "tavrolin/ui/property_values.h"

namespace tavrolin::ui {

ImageView::ImageView() {
    setUserInteractionEnabled(false);
}

void ImageView::setImage(std::shared_ptr<Image> image) {
    if (image == image_) return;
    const platform::Size before = intrinsicContentSize(platform::kUnlimitedWidth);
    image_ = std::move(image);
    if (image_ != nullptr && image_->isAnimated()) {
        shownSince_ = platform::current().dispatch->now();
    }
    if (before != intrinsicContentSize(platform::kUnlimitedWidth)) {
        invalidateIntrinsicContentSize();
    }
    setNeedsDisplay();
    setNeedsLayout();  // its owner may keep the picture's shape
}

void ImageView::setContentMode(ContentMode mode) {
    contentMode_ = mode;
    setNeedsDisplay();
}

void ImageView::setTintColor(std::optional<DynamicColor> color) {
    tintColor_ = color;
    setNeedsDisplay();
}

platform::Size ImageView::intrinsicContentSize(double) const {
    if (image_ == nullptr) return {kNoIntrinsicMetric, kNoIntrinsicMetric};
    return image_->size();
}

bool ImageView::isPlaying() const {
    return image_ != nullptr && image_->isAnimated();
}

platform::Rect ImageView::contentExtent() const {
    if (image_ == nullptr || bounds().isEmpty()) return {};
    return placeOf(image_->size(), bounds(), contentMode_);
}

void ImageView::drawContent(platform::Canvas& canvas) const {
    const platform::Rect place = contentExtent();
    if (place.isEmpty()) return;
    double elapsed = 0;
    if (isPlaying()) {
        elapsed = foundation::secondsBetween(shownSince_, platform::current().dispatch->now());
    }
    std::optional<platform::Color> tint;
    if (tintColor_) tint = resolved(*tintColor_);
    drawPicture(canvas, image_, elapsed, place, tint);  // the view clips, where it is to
}

bool ImageView::setProperty(std::string_view name, const foundation::Value& value) {
    using namespace property;
    if (name == "image") {
        setImage(asset(value));
    } else if (name == "contentMode") {
        setContentMode(oneOf<ContentMode>(value, {{"scaleToFill", ContentMode::scaleToFill},
                                                  {"scaleAspectFit", ContentMode::scaleAspectFit},
                                                  {"scaleAspectFill", ContentMode::scaleAspectFill},
                                                  {"center", ContentMode::center}}));
    } else if (name == "tintColor") {
        setTintColor(optionalColor(value));
    } else {
        return View::setProperty(name, value);
    }
    return true;
}

void ImageView::describe(foundation::Value& dictionary) const {
    View::describe(dictionary);
    dictionary.set(
        "image", image_ == nullptr ? foundation::Value::null() : foundation::Value(image_->name()));
}

}  // namespace tavrolin::ui
