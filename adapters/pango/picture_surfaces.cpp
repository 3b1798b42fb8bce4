#include "adapters/pango/picture_surfaces.h"

#include <cairo.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace tavrolin::adapters::pango {

using platform::Image;
using platform::ImageRef;

namespace {

// A screen's worth of pictures at three pixels for a point.
constexpr std::size_t kMaximumBytes = 12'000'000;
constexpr std::uint32_t kMaximumSide = 32'767;  // Cairo's own

// Red, green, blue, alpha, as a word in the machine's order.
std::uint32_t wordAt(const std::uint8_t* pixel) {
    std::uint32_t word = 0;
    std::memcpy(&word, pixel, sizeof word);
    return word;
}

constexpr bool kIsLittleEndian = std::endian::native == std::endian::little;
constexpr std::uint32_t kAlpha = kIsLittleEndian ? 0xFF000000U : 0xFFU;

bool isOpaque(const Image& image) {
    std::uint32_t common = kAlpha;
    for (std::size_t i = 0; i + 4 <= image.pixels.size(); i += 4)
        common &= wordAt(&image.pixels[i]);
    return common == kAlpha;
}

// Without branches, so that several are done at once.
std::uint32_t opaquePixel(std::uint32_t word) {
    if constexpr (!kIsLittleEndian) return word >> 8U | 0xFF000000U;
    return (word & 0xFF00FF00U) | (word >> 16U & 0xFFU) | (word & 0xFFU) << 16U;
}

std::uint32_t premultiplied(std::uint32_t channel, std::uint32_t alpha) {
    const std::uint32_t product = channel * alpha + 128;
    return (product + (product >> 8U)) >> 8U;  // divided by 255, rounded
}

std::uint32_t premultipliedPixel(const std::uint8_t* from) {
    const std::uint32_t alpha = from[3];
    return alpha << 24U | premultiplied(from[0], alpha) << 16U |
           premultiplied(from[1], alpha) << 8U | premultiplied(from[2], alpha);
}

SurfaceHandle converted(const Image& image) {
    const bool opaque = isOpaque(image);
    SurfaceHandle surface(
        cairo_image_surface_create(opaque ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32,
                                   static_cast<int>(image.width), static_cast<int>(image.height)));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    unsigned char* row = cairo_image_surface_get_data(surface.get());
    const std::uint8_t* from = image.pixels.data();
    for (std::uint32_t y = 0; y < image.height; ++y) {
        auto* to = reinterpret_cast<std::uint32_t*>(row);
        if (opaque) {
            for (std::uint32_t x = 0; x < image.width; ++x)
                to[x] = opaquePixel(wordAt(from + std::size_t{x} * 4));
        } else {
            for (std::uint32_t x = 0; x < image.width; ++x)
                to[x] = premultipliedPixel(from + std::size_t{x} * 4);
        }
        from += std::size_t{image.width} * 4;
        row += cairo_image_surface_get_stride(surface.get());
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

bool isUsable(const Image& image) {
    return image.width > 0 && image.height > 0 && image.width <= kMaximumSide &&
           image.height <= kMaximumSide &&
           image.pixels.size() == std::size_t{image.width} * image.height * 4;
}

}  // namespace

PictureSurfaces& PictureSurfaces::shared() {
    static PictureSurfaces* instance = new PictureSurfaces;
    return *instance;
}

cairo_surface_t* PictureSurfaces::surfaceOf(const ImageRef& image) {
    if (!image || !isUsable(*image)) return nullptr;
    const auto found = std::ranges::find_if(kept_, [&](const Kept& kept) {
        return kept.image == image.get() && !kept.alive.expired();
    });
    if (found != kept_.end()) {
        found->lastUse = ++uses_;
        return found->surface.get();
    }
    const std::size_t bytes = image->pixels.size();
    makeRoom(bytes);
    SurfaceHandle surface = converted(*image);
    if (!surface) return nullptr;
    bytes_ += bytes;
    kept_.push_back({image.get(), image, std::move(surface), bytes, ++uses_});
    return kept_.back().surface.get();
}

void PictureSurfaces::makeRoom(std::size_t bytes) {
    std::erase_if(kept_, [this](const Kept& kept) {
        if (!kept.alive.expired()) return false;
        bytes_ -= kept.bytes;
        return true;
    });
    // One that is larger than all that may be kept stays until the next one comes.
    while (!kept_.empty() && bytes_ + bytes > kMaximumBytes) {
        const auto oldest = std::ranges::min_element(kept_, {}, &Kept::lastUse);
        bytes_ -= oldest->bytes;
        kept_.erase(oldest);
    }
}

}  // namespace tavrolin::adapters::pango
