#pragma once

#include <string>
#include <vector>

#include "tavrolin/platform/canvas.h"

namespace tavrolin::adapters::memory {

/// Keeps what is drawn as lines to read, one for each operation, with numbers rounded to
/// hundredths and places counted from where the canvas began:
///
///     fill 16,0 343x44 radius 8 #FF0000FF
///     text "Hello" at 16,12 #000000FF
///     group 0.5 {
///
/// Texts must come from the memory typesetter.
class RecordingCanvas final : public platform::Canvas {
public:
    explicit RecordingCanvas(double scale = 2) : scale_(scale) {}

    const std::vector<std::string>& lines() const { return lines_; }
    /// Every `save` was restored and every group ended.
    bool isBalanced() const { return offsets_.size() == 1 && groups_.empty(); }

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
    std::string placed(const platform::Rect& rect, double cornerRadius) const;

    double scale_;
    std::vector<std::string> lines_;
    std::vector<platform::Point> offsets_{{}};
    std::vector<std::size_t> groups_;  // the lines in which they begin
};

}  // namespace tavrolin::adapters::memory
