#pragma once

#include <cstdint>
#include <memory>

#include "adapters/images/byte_source.h"
#include "adapters/images/scaling.h"
#include "tavrolin/platform/image_decoder.h"

// What each kind of picture offers to the decoder. `bytes` are known to begin like their kind.
namespace tavrolin::adapters::images {

inline constexpr std::uint64_t kMaximumPixels = 100'000'000;
inline constexpr std::size_t kMaximumFrames = 4096;
/// How many rows make `…Begins` believe a file.
inline constexpr std::uint32_t kFirstRows = 16;

/// Whether a picture of this size may be decoded: it has pixels, not too many, and a file of
/// `bytes` bytes can fill them at `pixelsPerByte`, the most that its kind of compression reaches.
inline bool isReasonable(std::uint64_t width, std::uint64_t height, std::uint64_t bytes,
                         std::uint64_t pixelsPerByte) {
    return width > 0 && height > 0 && width <= kMaximumPixels && height <= kMaximumPixels &&
           width * height <= kMaximumPixels && width * height / pixelsPerByte <= bytes;
}

/// Null when it has no frames.
std::unique_ptr<platform::ImageSource> openGIF(std::unique_ptr<ByteSource> bytes);
bool gifBegins(const ByteSource& bytes);

/// The size as it is shown, from the header; no pixels when there is none.
PixelSize sizeOfJPEG(const ByteSource& bytes);
PixelSize sizeOfPNG(const ByteSource& bytes);
PixelSize sizeOfWebP(const ByteSource& bytes);
/// As it is shown, scaled down to fit while it is decoded. Null when not even the header can be
/// read; rows that are missing stay transparent (in a JPEG: grey).
platform::ImageRef decodeJPEG(const ByteSource& bytes, PixelSize bounds);
platform::ImageRef decodePNG(const ByteSource& bytes, PixelSize bounds);
platform::ImageRef decodeWebP(const ByteSource& bytes, PixelSize bounds);
/// Whether the header and the first rows decode.
bool jpegBegins(const ByteSource& bytes);
bool pngBegins(const ByteSource& bytes);
bool webpBegins(const ByteSource& bytes);

}  // namespace tavrolin::adapters::images
