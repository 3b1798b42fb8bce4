#include "adapters/pango/canvas.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "adapters/pango/handles.h"
#include "adapters/pango/picture_surfaces.h"
#include "adapters/pango/png_file.h"
#include "adapters/pango/shared_text.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::adapters::pango {

using platform::Color;
using platform::Gradient;
using platform::ImageRef;
using platform::Point;
using platform::Rect;

namespace {

// In pixels; what lies farther out is drawn by nobody, and Cairo's numbers end at eight million.
constexpr double kFarthest = 4'000'000;
// How far from the grid of pixels a place may lie and still be taken for lying on it.
constexpr double kOnGrid = 0.01;
// A screen's worth at two pixels for a point.
constexpr int kBandPixels = 1'500'000;
// Rows around a band that are drawn and not taken. A line of text that lies across the edge of what
// is drawn loses pixels at its own edges, which Cairo then cuts to whole ones.
constexpr int kMargin = 256;

bool isFinite(const Color& color) {
    return std::isfinite(color.red) && std::isfinite(color.green) && std::isfinite(color.blue) &&
           std::isfinite(color.alpha);
}

bool isDrawable(const Color& color) {
    return isFinite(color) && color.alpha > 0;
}

void require(double width, double height, double scale, bool holds) {
    if (holds && std::isfinite(scale) && scale > 0) return;
    foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                 "A canvas can't have " + std::to_string(width) + " by " +
                                     std::to_string(height) + " points at a scale of " +
                                     std::to_string(scale));
}

// The pixels of so many points; numbers that only missed a whole one by rounding count as that.
int pixelsOf(double points, double scale) {
    const double pixels = std::ceil(points * scale - 1e-6);
    return pixels > 1 ? static_cast<int>(std::min(pixels, 1e6)) : 1;
}

struct PixelSize {
    int width = 0;
    int height = 0;
};

PixelSize pixelSize(double width, double height, double scale) {
    const PixelSize size = {pixelsOf(width, scale), pixelsOf(height, scale)};
    require(width, height, scale,
            size.width <= PixelCanvas::kMaximumSide && size.height <= PixelCanvas::kMaximumSide &&
                double{1} * size.width * size.height <= PixelCanvas::kMaximumPixels);
    return size;
}

int rowsOfBand(const PixelSize& size) {
    return std::clamp(kBandPixels / size.width, 1, size.height);
}

// What is drawn, if it is no more than a band; otherwise how it is drawn.
SurfaceHandle pixelSurface(const PixelSize& size) {
    if (rowsOfBand(size) == size.height) {
        return SurfaceHandle(
            cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.width, size.height));
    }
    const cairo_rectangle_t extents = {0, 0, double{1} * size.width, double{1} * size.height};
    return SurfaceHandle(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents));
}

Pixels pixelsOf(cairo_surface_t* image, int first, int rows) {
    cairo_surface_flush(image);
    const int stride = cairo_image_surface_get_stride(image);
    return {cairo_image_surface_get_data(image) + std::ptrdiff_t{first} * stride,
            static_cast<std::uint32_t>(cairo_image_surface_get_width(image)),
            static_cast<std::uint32_t>(rows), static_cast<std::size_t>(stride)};
}

}  // namespace

class Canvas::Surface {
public:
    Surface(SurfaceHandle surface, double pixelsForPoint, double matrixScale, SetText::Emoji emoji)
        : scale_(pixelsForPoint),
          emoji_(emoji),
          surface_(std::move(surface)),
          cairo_(cairo_create(surface_.get())) {
        cairo_scale(cairo(), matrixScale, matrixScale);
    }

    static std::unique_ptr<Surface> pixels(double width, double height, double scale) {
        const PixelSize size = pixelSize(width, height, scale);
        SurfaceHandle surface = pixelSurface(size);
        require(width, height, scale, cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS);
        auto result =
            std::make_unique<Surface>(std::move(surface), scale, scale, SetText::Emoji::glyphs);
        result->size_ = size;
        return result;
    }
    static std::unique_ptr<Surface> vectors(double width, double height, double scale) {
        pixelSize(width, height, scale);  // the same limits
        auto svg = std::make_unique<std::string>();
        SurfaceHandle surface(cairo_svg_surface_create_for_stream(
            append, svg.get(), std::max(width, 1.0), std::max(height, 1.0)));
        cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
        auto result =
            std::make_unique<Surface>(std::move(surface), scale, 1, SetText::Emoji::pictures);
        result->svg_ = std::move(svg);
        return result;
    }

    cairo_t* cairo() const { return cairo_.get(); }
    double scale() const { return scale_; }
    SetText::Emoji emoji() const { return emoji_; }

    void save() {
        cairo_save(cairo());
        open_.push_back(Open::save);
    }
    void restore() {
        if (open_.empty() || open_.back() != Open::save) return;
        cairo_restore(cairo());
        open_.pop_back();
    }
    void beginGroup() {
        cairo_push_group(cairo());
        open_.push_back(Open::group);
    }
    void endGroup(double alpha) {
        // What was saved within the group ends with it.
        if (std::ranges::find(open_, Open::group) == open_.end()) return;
        while (open_.back() == Open::save)
            restore();
        cairo_pop_group_to_source(cairo());
        if (alpha > 0) cairo_paint_with_alpha(cairo(), std::min(alpha, 1.0));
        cairo_set_source_rgba(cairo(), 0, 0, 0, 1);  // lets go of the group
        open_.pop_back();
    }
    void closeAll() {
        while (!open_.empty()) {
            if (open_.back() == Open::group) {
                endGroup(1);
            } else {
                restore();
            }
        }
    }

    const PixelSize& size() const { return size_; }
    /// Calls `take` for what is drawn, as pixels, from the top, a band after the other, until it
    /// returns false. True when it had all of them.
    template <class Take>
    bool eachBand(Take take) {
        closeAll();
        const int rows = rowsOfBand(size_);
        if (rows == size_.height) return take(pixelsOf(surface_.get(), 0, rows));
        const SurfaceHandle band(
            cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size_.width, rows + 2 * kMargin));
        const CairoHandle cairo(cairo_create(band.get()));
        cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);
        for (int top = 0; top < size_.height; top += rows) {
            cairo_set_source_surface(cairo.get(), surface_.get(), 0, kMargin - top);
            cairo_paint(cairo.get());
            if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) return false;
            if (!take(pixelsOf(band.get(), kMargin, std::min(rows, size_.height - top))))
                return false;
        }
        return true;
    }
    std::string finished() {
        closeAll();
        cairo_surface_finish(surface_.get());
        return std::move(*svg_);
    }

    /// Whether a rectangle can be drawn where it would come to lie.
    bool reaches(const Rect& rect) const {
        std::array<Point, 2> corners = {rect.origin(), {rect.maxX(), rect.maxY()}};
        return !rect.isEmpty() && std::ranges::all_of(corners, [this](Point& corner) {
            cairo_user_to_device(cairo(), &corner.x, &corner.y);
            return std::abs(corner.x) < kFarthest && std::abs(corner.y) < kFarthest;
        });
    }
    void trace(const Rect& rect, double cornerRadius) const {
        const double radius = std::min({cornerRadius, rect.width / 2, rect.height / 2});
        if (!(radius > 0)) {
            cairo_rectangle(cairo(), rect.x, rect.y, rect.width, rect.height);
            return;
        }
        constexpr double kQuarter = std::numbers::pi / 2;
        const double left = rect.x + radius;
        const double right = rect.maxX() - radius;
        const double top = rect.y + radius;
        const double bottom = rect.maxY() - radius;
        cairo_new_sub_path(cairo());
        cairo_arc(cairo(), right, top, radius, -kQuarter, 0);
        cairo_arc(cairo(), right, bottom, radius, 0, kQuarter);
        cairo_arc(cairo(), left, bottom, radius, kQuarter, 2 * kQuarter);
        cairo_arc(cairo(), left, top, radius, 2 * kQuarter, 3 * kQuarter);
        cairo_close_path(cairo());
    }
    void setColor(const Color& color) const {
        cairo_set_source_rgba(cairo(), color.red, color.green, color.blue, color.alpha);
    }

private:
    enum class Open { save, group };

    static cairo_status_t append(void* to, const unsigned char* bytes, unsigned length) {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), length);
        return CAIRO_STATUS_SUCCESS;
    }

    double scale_;
    SetText::Emoji emoji_;
    PixelSize size_;                    // of a canvas of pixels
    std::unique_ptr<std::string> svg_;  // outlives the surface that writes it
    SurfaceHandle surface_;
    CairoHandle cairo_;
    std::vector<Open> open_;
};

Canvas::Canvas(std::unique_ptr<Surface> surface) : surface_(std::move(surface)) {}
Canvas::~Canvas() = default;

void Canvas::save() {
    surface_->save();
}
void Canvas::restore() {
    surface_->restore();
}
double Canvas::scale() const {
    return surface_->scale();
}
void Canvas::beginGroup() {
    surface_->beginGroup();
}
void Canvas::endGroup(double alpha) {
    surface_->endGroup(alpha);
}

void Canvas::translate(double dx, double dy) {
    if (std::abs(dx) < kFarthest && std::abs(dy) < kFarthest)
        cairo_translate(surface_->cairo(), dx, dy);
}

void Canvas::clip(const Rect& rect, double cornerRadius) {
    // Nothing is inside of what can't be drawn.
    if (surface_->reaches(rect)) surface_->trace(rect, cornerRadius);
    cairo_clip(surface_->cairo());
}

void Canvas::fill(const Rect& rect, double cornerRadius, const Color& color) {
    if (!surface_->reaches(rect) || !isDrawable(color)) return;
    surface_->setColor(color);
    surface_->trace(rect, cornerRadius);
    cairo_fill(surface_->cairo());
}

void Canvas::fill(const Rect& rect, double cornerRadius, const Gradient& gradient) {
    const auto& [colors, start, end] = gradient;
    if (colors.empty()) return;
    if (colors.size() == 1 || start == end) return fill(rect, cornerRadius, colors.back());
    const bool hasLine = std::isfinite(start.x) && std::isfinite(start.y) && std::isfinite(end.x) &&
                         std::isfinite(end.y);
    if (!surface_->reaches(rect) || !hasLine || !std::ranges::all_of(colors, isFinite)) return;
    const PatternHandle pattern(
        cairo_pattern_create_linear(rect.x + start.x * rect.width, rect.y + start.y * rect.height,
                                    rect.x + end.x * rect.width, rect.y + end.y * rect.height));
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const Color& color = colors[i];
        cairo_pattern_add_color_stop_rgba(
            pattern.get(), static_cast<double>(i) / static_cast<double>(colors.size() - 1),
            color.red, color.green, color.blue, color.alpha);
    }
    cairo_set_source(surface_->cairo(), pattern.get());
    surface_->trace(rect, cornerRadius);
    cairo_fill(surface_->cairo());
}

void Canvas::stroke(const Rect& rect, double cornerRadius, double width, const Color& color) {
    if (!surface_->reaches(rect) || !isDrawable(color) || !(width > 0)) return;
    if (width * 2 >= std::min(rect.width, rect.height)) return fill(rect, cornerRadius, color);
    surface_->setColor(color);
    surface_->trace(rect.inset(width / 2, width / 2), cornerRadius - width / 2);
    cairo_set_line_width(surface_->cairo(), width);
    cairo_stroke(surface_->cairo());
}

namespace {

// Where to put a picture that has as many pixels as its place, give or take a fraction: on whole
// ones, so that it stays sharp. Nothing for any other, which is to be stretched.
std::optional<Point> placeOnGrid(cairo_t* cairo, const Rect& rect, double width, double height) {
    Point corner = rect.origin();
    Point size = {rect.width, rect.height};
    cairo_user_to_device(cairo, &corner.x, &corner.y);
    cairo_user_to_device_distance(cairo, &size.x, &size.y);
    const auto isFor = [](double pixels, double length) {
        return pixels > length - 1 + kOnGrid && pixels < length + 1 - kOnGrid &&
               pixels >= std::floor(length + kOnGrid);
    };
    if (!isFor(width, size.x) || !isFor(height, size.y)) return std::nullopt;
    // Halves go the same way wherever they are.
    return Point{std::floor(corner.x + 0.5 + kOnGrid), std::floor(corner.y + 0.5 + kOnGrid)};
}

}  // namespace

void Canvas::drawImage(const ImageRef& image, const Rect& rect, const std::optional<Color>& tint) {
    if (!surface_->reaches(rect) || (tint && !isDrawable(*tint))) return;
    cairo_surface_t* picture = PictureSurfaces::shared().surfaceOf(image);
    if (picture == nullptr) return;
    cairo_t* cairo = surface_->cairo();
    cairo_save(cairo);
    const PatternHandle pattern(cairo_pattern_create_for_surface(picture));
    const double width = image->width;
    const double height = image->height;
    if (const auto origin = placeOnGrid(cairo, rect, width, height)) {
        cairo_identity_matrix(cairo);
        cairo_translate(cairo, origin->x, origin->y);
        cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_NEAREST);
        cairo_rectangle(cairo, 0, 0, width, height);
    } else {
        cairo_translate(cairo, rect.x, rect.y);
        cairo_scale(cairo, rect.width / width, rect.height / height);
        cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_GOOD);
        // Or the picture's edge would fade away.
        cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
        cairo_rectangle(cairo, 0, 0, width, height);
    }
    if (tint) {
        cairo_clip(cairo);
        surface_->setColor(*tint);
        cairo_mask(cairo, pattern.get());
    } else {
        cairo_set_source(cairo, pattern.get());
        cairo_fill(cairo);
    }
    cairo_restore(cairo);
}

void Canvas::drawText(const platform::TextLayout& text, Point origin, const Color& color) {
    const auto* shared = dynamic_cast<const SharedText*>(&text);
    const platform::Size size = text.size();
    if (shared == nullptr || !isDrawable(color) ||
        !surface_->reaches({origin.x, origin.y, size.width + 1, size.height + 1}))
        return;
    cairo_t* cairo = surface_->cairo();
    cairo_save(cairo);
    cairo_translate(cairo, origin.x, origin.y);
    surface_->setColor(color);
    shared->text().draw(cairo, surface_->emoji());
    cairo_new_path(cairo);  // pango leaves a point behind
    cairo_restore(cairo);
}

PixelCanvas::PixelCanvas(double width, double height, double scale)
    : Canvas(Surface::pixels(width, height, scale)) {}

int PixelCanvas::pixelWidth() const {
    return surface().size().width;
}
int PixelCanvas::pixelHeight() const {
    return surface().size().height;
}

std::string PixelCanvas::png() {
    const auto width = static_cast<std::uint32_t>(pixelWidth());
    const auto height = static_cast<std::uint32_t>(pixelHeight());
    for (const bool withAlpha : {false, true}) {
        PNGFile file(width, height, withAlpha);
        const bool isWhole = surface().eachBand(
            [&](const Pixels& band) { return (withAlpha || band.isOpaque()) && file.add(band); });
        if (isWhole) return file.finished();
    }
    return {};
}

ImageRef PixelCanvas::image() {
    auto image = std::make_shared<platform::Image>();
    image->width = static_cast<std::uint32_t>(pixelWidth());
    image->height = static_cast<std::uint32_t>(pixelHeight());
    const std::size_t rowBytes = std::size_t{image->width} * 4;
    image->pixels.resize(rowBytes * image->height);
    std::uint8_t* row = image->pixels.data();
    surface().eachBand([&](const Pixels& band) {
        for (std::uint32_t y = 0; y < band.height; ++y, row += rowBytes)
            band.unpack(y, true, row);
        return true;
    });
    return image;
}

VectorCanvas::VectorCanvas(double width, double height, double scale)
    : Canvas(Surface::vectors(width, height, scale)) {}

std::string VectorCanvas::svg() {
    return surface().finished();
}

}  // namespace tavrolin::adapters::pango
