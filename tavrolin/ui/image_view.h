#pragma once

#include "tavrolin/foundation/date.h"
#include "tavrolin/ui/content_fit.h"
#include "tavrolin/ui/image.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// Shows a picture; an animated one plays as soon as it is set, on the clock of the dispatch port.
/// Properties of interface files: image (an asset of the library's bundle), contentMode, tintColor.
class ImageView : public View {
public:
    ImageView();
    std::string_view className() const override { return "ImageView"; }

    const std::shared_ptr<Image>& image() const { return image_; }
    void setImage(std::shared_ptr<Image> image);
    ContentMode contentMode() const { return contentMode_; }
    void setContentMode(ContentMode mode);
    /// The picture's shape in one colour, instead of its own.
    void setTintColor(std::optional<DynamicColor> color);

    platform::Size intrinsicContentSize(double availableWidth) const override;  // the image's
    bool setProperty(std::string_view name, const foundation::Value& value) override;
    void describe(foundation::Value& dictionary) const override;

protected:
    void drawContent(platform::Canvas& canvas) const override;
    platform::Rect contentExtent() const override;
    bool isPlaying() const override;

private:
    std::shared_ptr<Image> image_;
    foundation::Date shownSince_;
    ContentMode contentMode_ = ContentMode::scaleToFill;
    std::optional<DynamicColor> tintColor_;
};

}  // namespace tavrolin::ui
