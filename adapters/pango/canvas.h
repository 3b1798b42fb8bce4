#pragma once

#include <memory>
#include <string>

#include "tavrolin/platform/canvas.h"

namespace tavrolin::adapters::pango {

/// Draws with Cairo. It takes the layouts of this adapter's typesetter only.
class Canvas : public platform::Canvas {
public:
    ~Canvas() override;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

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
    double scale() const override;

protected:
    class Surface;
    explicit Canvas(std::unique_ptr<Surface> surface);
    Surface& surface() const { return *surface_; }

private:
    std::unique_ptr<Surface> surface_;
};

/// A canvas of pixels, transparent at first. Of a large one only what is drawn is kept; it becomes
/// pixels a band of rows at a time, so that memory doesn't grow with the height.
class PixelCanvas : public Canvas {
public:
    static constexpr int kMaximumSide = 32'767;  // in pixels; Cairo's own
    static constexpr double kMaximumPixels = 100'000'000;

    /// Of `width` by `height` points, with `scale` pixels for a point; broken pixels count as whole
    /// ones, and there is at least one. Raises when the scale is no positive number, or when there
    /// are too many pixels.
    PixelCanvas(double width, double height, double scale);

    int pixelWidth() const;
    int pixelHeight() const;
    /// What is drawn so far as a PNG file: RGB when all of it is opaque, RGBA otherwise, written
    /// with speed in mind. Ends the groups and takes back the saves that are open. Empty when there
    /// is no memory for it.
    std::string png();
    /// What is drawn so far as an image for another canvas.
    platform::ImageRef image();
};

/// A canvas of shapes, which becomes an SVG file. Text is in it as outlines, so that its reader
/// needs no fonts; emoji are pictures.
class VectorCanvas : public Canvas {
public:
    /// Of `width` by `height` points; `scale` is what pictures are decoded for. Raises as
    /// PixelCanvas does.
    VectorCanvas(double width, double height, double scale = 2);

    /// The whole file. Nothing can be drawn afterwards.
    std::string svg();
};

}  // namespace tavrolin::adapters::pango
