#include "adapters/images/orientation.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrolin::adapters::images {

namespace {

constexpr std::uint8_t kExifMarker = 0xE1;
constexpr std::string_view kExifHead("Exif\0\0", 6);
constexpr std::uint32_t kOrientationTag = 0x0112;
constexpr std::uint32_t kShort = 3;
constexpr std::size_t kEntry = 12;

// The numbers of a TIFF, which says in its head in which order their bytes come. Nothing beyond the
// end.
class TIFF {
public:
    explicit TIFF(std::string_view bytes) : bytes_(bytes) {}

    bool isValid() {
        isBigEndian_ = bytes_.starts_with("MM");
        return (isBigEndian_ || bytes_.starts_with("II")) && number(2, 2) == 42U;
    }
    std::optional<std::uint32_t> number(std::size_t offset, std::size_t size) const {
        if (offset > bytes_.size() || bytes_.size() - offset < size) return {};
        std::uint32_t result = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t at = isBigEndian_ ? i : size - 1 - i;
            result = result << 8U | static_cast<std::uint8_t>(bytes_[offset + at]);
        }
        return result;
    }

private:
    std::string_view bytes_;
    bool isBigEndian_ = false;
};

std::optional<std::uint32_t> orientationIn(std::string_view bytes) {
    TIFF tiff(bytes);
    if (!tiff.isValid()) return {};
    const std::size_t directory = tiff.number(4, 4).value_or(0);
    const std::uint32_t count = tiff.number(directory, 2).value_or(0);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t entry = directory + 2 + i * kEntry;
        const std::optional<std::uint32_t> tag = tiff.number(entry, 2);
        if (!tag) return {};
        if (tag == kOrientationTag && tiff.number(entry + 2, 2) == kShort)
            return tiff.number(entry + 8, 2);
    }
    return {};
}

}  // namespace

Orientation Orientation::ofJPEG(const ByteSource& bytes) {
    std::uint32_t found = 1;
    visitSegments(bytes, [&](std::uint8_t marker, std::uint64_t offset, std::uint32_t length) {
        if (marker != kExifMarker || length < kExifHead.size()) return false;
        std::vector<std::uint8_t> segment(length);
        segment.resize(bytes.read(offset, segment.data(), segment.size()));
        std::string_view text(reinterpret_cast<const char*>(segment.data()), segment.size());
        if (!text.starts_with(kExifHead)) return false;
        text.remove_prefix(kExifHead.size());
        found = orientationIn(text).value_or(1);
        return true;
    });
    return Orientation(found >= 1 && found <= 8 ? found : 1);
}

PixelSize Orientation::applied(PixelSize size) const {
    if (isTurned()) std::swap(size.width, size.height);
    return size;
}

std::shared_ptr<platform::Image> Orientation::applied(
    std::shared_ptr<platform::Image> image) const {
    if (number_ == 1 || !image) return image;
    // Whether the result's rows, or columns, run against the picture's.
    const bool flipsX = number_ == 2 || number_ == 3 || number_ == 7 || number_ == 8;
    const bool flipsY = number_ == 3 || number_ == 4 || number_ == 6 || number_ == 7;
    const PixelSize from = {image->width, image->height};
    const PixelSize to = applied(from);
    auto turned = std::make_shared<platform::Image>();
    turned->width = to.width;
    turned->height = to.height;
    turned->pixels.resize(image->pixels.size());
    std::uint8_t* pixel = turned->pixels.data();
    for (std::uint32_t y = 0; y < to.height; ++y) {
        for (std::uint32_t x = 0; x < to.width; ++x, pixel += 4) {
            std::size_t fromX = isTurned() ? y : x;
            std::size_t fromY = isTurned() ? x : y;
            if (flipsX) fromX = from.width - 1 - fromX;
            if (flipsY) fromY = from.height - 1 - fromY;
            std::memcpy(pixel, image->pixels.data() + (fromY * from.width + fromX) * 4, 4);
        }
    }
    return turned;
}

}  // namespace tavrolin::adapters::images
