#include "tavrolin/ui/drawing.h"

#include <utility>

namespace tavrolin::ui {

using platform::Color;
using platform::Rect;

void Drawing::keep(std::shared_ptr<Image> image, double elapsed, const Rect& place,
                   const std::optional<Color>& tint) {
    steps_.emplace_back([=, image = std::move(image)](platform::Canvas& canvas) {
        drawPicture(canvas, image, elapsed, place, tint);
    });
}

void Drawing::draw(platform::Canvas& canvas) const {
    for (const Step& step : steps_)
        step(canvas);
}

void Drawing::save() {
    steps_.emplace_back([](platform::Canvas& canvas) { canvas.save(); });
}

void Drawing::restore() {
    steps_.emplace_back([](platform::Canvas& canvas) { canvas.restore(); });
}

void Drawing::translate(double dx, double dy) {
    steps_.emplace_back([=](platform::Canvas& canvas) { canvas.translate(dx, dy); });
}

void Drawing::clip(const Rect& rect, double cornerRadius) {
    steps_.emplace_back([=](platform::Canvas& canvas) { canvas.clip(rect, cornerRadius); });
}

void Drawing::beginGroup() {
    steps_.emplace_back([](platform::Canvas& canvas) { canvas.beginGroup(); });
}

void Drawing::endGroup(double alpha) {
    steps_.emplace_back([=](platform::Canvas& canvas) { canvas.endGroup(alpha); });
}

void Drawing::fill(const Rect& rect, double cornerRadius, const Color& color) {
    steps_.emplace_back([=](platform::Canvas& canvas) { canvas.fill(rect, cornerRadius, color); });
}

void Drawing::fill(const Rect& rect, double cornerRadius, const platform::Gradient& gradient) {
    steps_.emplace_back(
        [=](platform::Canvas& canvas) { canvas.fill(rect, cornerRadius, gradient); });
}

void Drawing::stroke(const Rect& rect, double cornerRadius, double width, const Color& color) {
    steps_.emplace_back(
        [=](platform::Canvas& canvas) { canvas.stroke(rect, cornerRadius, width, color); });
}

void Drawing::drawImage(const platform::ImageRef& image, const Rect& rect,
                        const std::optional<Color>& tint) {
    steps_.emplace_back([=](platform::Canvas& canvas) { canvas.drawImage(image, rect, tint); });
}

void Drawing::drawText(const platform::TextLayout& text, platform::Point origin,
                       const Color& color) {
    steps_.emplace_back(
        [&text, origin, color](platform::Canvas& canvas) { canvas.drawText(text, origin, color); });
}

void drawPicture(platform::Canvas& canvas, const std::shared_ptr<Image>& image, double elapsed,
                 const Rect& place, const std::optional<Color>& tint) {
    if (auto* const drawing = dynamic_cast<Drawing*>(&canvas))
        return drawing->keep(image, elapsed, place, tint);
    const double scale = canvas.scale();
    const auto pixels = image->pixels({place.width * scale, place.height * scale}, elapsed);
    if (pixels != nullptr) canvas.drawImage(pixels, place, tint);
}

}  // namespace tavrolin::ui
