#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "tavrolin/platform/canvas.h"
#include "tavrolin/ui/image.h"

namespace tavrolin::ui {

/// A canvas that remembers what is drawn on it, to be drawn again. Texts and pictures are
/// remembered by those who draw them, with `keep`: the canvas itself can't own them.
class Drawing final : public platform::Canvas {
public:
    explicit Drawing(double scale = 1) : scale_(scale) {}

    /// Keeps a text that was drawn or is about to be.
    void keep(std::shared_ptr<const platform::TextLayout> text) {
        texts_.push_back(std::move(text));
    }
    /// Keeps a picture in place of its pixels, which are decoded when this is drawn, if it ever is.
    void keep(std::shared_ptr<Image> image, double elapsed, const platform::Rect& place,
              const std::optional<platform::Color>& tint);
    void draw(platform::Canvas& canvas) const;

    void save() override;
    void restore() override;
    void translate(double dx, double dy) override;
    void clip(const platform::Rect& rect, double cornerRadius) override;
    void beginGroup() override;
    void endGroup(double alpha) override;
    void fill(const platform::Rect& rect, double cornerRadius,
              const platform::Color& color) override;
    void fill(const platform::Rect& rect, double cornerRadius,
              const platform::Gradient& gradient) override;
    void stroke(const platform::Rect& rect, double cornerRadius, double width,
                const platform::Color& color) override;
    void drawImage(const platform::ImageRef& image, const platform::Rect& rect,
                   const std::optional<platform::Color>& tint) override;
    void drawText(const platform::TextLayout& text, platform::Point origin,
                  const platform::Color& color) override;
    double scale() const override { return scale_; }

private:
    using Step = std::function<void(platform::Canvas&)>;

    double scale_;
    std::vector<Step> steps_;
    std::vector<std::shared_ptr<const platform::TextLayout>> texts_;
};

/// Draws what a picture shows so many seconds after it came on screen; nothing when it can't be
/// decoded.
void drawPicture(platform::Canvas& canvas, const std::shared_ptr<Image>& image, double elapsed,
                 const platform::Rect& place, const std::optional<platform::Color>& tint);

}  // namespace tavrolin::ui
