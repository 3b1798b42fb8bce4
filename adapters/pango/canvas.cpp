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
// How far from the grid of pixels a picture may lie and still be taken for lying on it.
constexpr double kOnGrid = 0.01;

bool isDrawable(const Color& color) {
    return std::isfinite(color.red) && std::isfinite(color.green) && std::isfinite(color.blue) &&
           color.alpha > 0;
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

SurfaceHandle pixelSurface(double width, double height, double scale) {
    const int pixelWidth = pixelsOf(width, scale);
    const int pixelHeight = pixelsOf(height, scale);
    require(width, height, scale,
            pixelWidth <= PixelCanvas::kMaximumSide && pixelHeight <= PixelCanvas::kMaximumSide &&
                double{1} * pixelWidth * pixelHeight <= PixelCanvas::kMaximumPixels);
    SurfaceHandle surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixelWidth, pixelHeight));
    require(width, height, scale, cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS);
    return surface;
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
        return std::make_unique<Surface>(pixelSurface(width, height, scale), scale, scale,
                                         SetText::Emoji::glyphs);
    }
    static std::unique_ptr<Surface> vectors(double width, double height, double scale) {
        pixelSurface(width, height, scale);  // the same limits
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

    Pixels flushed() {
        closeAll();
        cairo_surface_flush(surface_.get());
        return {cairo_image_surface_get_data(surface_.get()),
                static_cast<std::uint32_t>(cairo_image_surface_get_width(surface_.get())),
                static_cast<std::uint32_t>(cairo_image_surface_get_height(surface_.get())),
                static_cast<std::size_t>(cairo_image_surface_get_stride(surface_.get()))};
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
    const bool isFinite = std::isfinite(start.x) && std::isfinite(start.y) &&
                          std::isfinite(end.x) && std::isfinite(end.y);
    if (!surface_->reaches(rect) || !isFinite) return;
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

// Where a rectangle comes to lie, in pixels; nothing when that is not on their grid.
bool liesOnGrid(cairo_t* cairo, const Rect& rect, double width, double height, Point& origin) {
    Point corner = rect.origin();
    Point size = {rect.width, rect.height};
    cairo_user_to_device(cairo, &corner.x, &corner.y);
    cairo_user_to_device_distance(cairo, &size.x, &size.y);
    origin = {std::round(corner.x), std::round(corner.y)};
    return std::abs(corner.x - origin.x) < kOnGrid && std::abs(corner.y - origin.y) < kOnGrid &&
           std::abs(size.x - width) < kOnGrid && std::abs(size.y - height) < kOnGrid;
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
    Point origin;
    const bool isOnGrid = liesOnGrid(cairo, rect, width, height, origin);
    if (isOnGrid) {
        cairo_identity_matrix(cairo);
        cairo_translate(cairo, origin.x, origin.y);
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
    return static_cast<int>(surface().flushed().width);
}
int PixelCanvas::pixelHeight() const {
    return static_cast<int>(surface().flushed().height);
}

std::string PixelCanvas::png() {
    return pngFile(surface().flushed());
}

ImageRef PixelCanvas::image() {
    const Pixels pixels = surface().flushed();
    auto image = std::make_shared<platform::Image>();
    image->width = pixels.width;
    image->height = pixels.height;
    const std::size_t rowBytes = std::size_t{pixels.width} * 4;
    image->pixels.resize(rowBytes * pixels.height);
    for (std::uint32_t y = 0; y < pixels.height; ++y)
        pixels.unpack(y, true, image->pixels.data() + y * rowBytes);
    return image;
}

VectorCanvas::VectorCanvas(double width, double height, double scale)
    : Canvas(Surface::vectors(width, height, scale)) {}

std::string VectorCanvas::svg() {
    return surface().finished();
}

}  // namespace tavrolin::adapters::pango
