#pragma once

#include <vector>

#include "tavrolin/platform/color.h"
#include "tavrolin/platform/geometry.h"
#include "tavrolin/platform/image_decoder.h"
#include "tavrolin/platform/typesetter.h"

namespace tavrolin::platform {

/// Colours at equal distances along a line from start to end, in unit coordinates of the rectangle
/// that is filled; beyond the ends the outer colours go on.
struct Gradient {
    std::vector<Color> colors;
    Point start;
    Point end;
    bool operator==(const Gradient&) const = default;
};

/// A surface to draw on, in points. Every operation is within the present clip and offset. What
/// can't be drawn (an empty rectangle, numbers that are no numbers) is left out. Main thread.
class Canvas {
public:
    virtual ~Canvas() = default;

    // Nested; `restore` takes back the offset and the clip that came after its `save`.
    virtual void save() = 0;
    virtual void restore() = 0;
    virtual void translate(double dx, double dy) = 0;
    virtual void clip(const Rect& rect, double cornerRadius) = 0;

    /// What is drawn in between is drawn as a whole with this opacity.
    virtual void beginGroup() = 0;
    virtual void endGroup(double alpha) = 0;

    virtual void fill(const Rect& rect, double cornerRadius, const Color& color) = 0;
    virtual void fill(const Rect& rect, double cornerRadius, const Gradient& gradient) = 0;
    /// A line of `width` inside the rectangle's edge.
    virtual void stroke(const Rect& rect, double cornerRadius, double width,
                        const Color& color) = 0;
    /// The whole image, stretched over the rectangle; with a tint its shape is filled with that
    /// colour.
    virtual void drawImage(const ImageRef& image, const Rect& rect,
                           const std::optional<Color>& tint) = 0;
    /// The upper left corner of the text's frame at `origin`; where nothing else is said, in
    /// `color`. The layout comes from this technology's typesetter.
    virtual void drawText(const TextLayout& text, Point origin, const Color& color) = 0;

    /// Pixels for a point, for those who decode a picture at the size that is shown.
    virtual double scale() const = 0;
};

}  // namespace tavrolin::platform
