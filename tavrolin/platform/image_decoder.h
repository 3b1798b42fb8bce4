#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin::platform {

/// Pixels, immutable once made: 8 bits a channel, red, green, blue, alpha (not premultiplied), rows
/// from the top without padding.
struct Image {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> pixels;  // width * height * 4 bytes
};
using ImageRef = std::shared_ptr<const Image>;

/// A picture file opened for reading, frame by frame. One thread at a time.
class ImageSource {
public:
    /// The delays of a GIF frame in seconds, absent where the file gives none. `unclamped` is what
    /// the file says; `clamped` is what players make of it (below 0.02 s they take 0.1 s).
    struct GIFTiming {
        std::optional<double> unclampedDelayTime;
        std::optional<double> delayTime;
    };

    virtual ~ImageSource() = default;

    virtual std::size_t count() const = 0;
    /// The first image's size in pixels as it is shown: what the file says, with a photo's
    /// orientation applied. Nothing is decoded for it.
    virtual std::uint32_t width() const = 0;
    virtual std::uint32_t height() const = 0;
    /// The whole canvas as it stands at this frame, scaled down to at most so many pixels each way
    /// (its own size where that is smaller; 0 counts as 1). A first image of which the end is
    /// missing comes as far as it goes; a later frame that can't be decoded shows what stood before
    /// it. Null when there is no such frame, or no picture at all. Going forward is cheap, going
    /// back starts again. The first image takes memory for what comes back, not for the file's
    /// picture; from the second on, one canvas is kept.
    virtual ImageRef imageAtIndex(std::size_t index, std::uint32_t width, std::uint32_t height) = 0;
    /// Lets go of what is kept in order to go on from the last frame; what is left takes no pixels
    /// and no open file.
    virtual void forgetFrames() {}
    /// Nothing when the frame has no GIF properties (a still picture, a frame that is missing).
    virtual std::optional<GIFTiming> gifTimingAtIndex(std::size_t index) = 0;
};

/// Reads GIF, JPEG, PNG and WebP; what a file is, its bytes say, not its name. Threads: any.
class ImageDecoder {
public:
    virtual ~ImageDecoder() = default;

    /// Null when it is no picture that can be read. Bytes are copied.
    virtual std::unique_ptr<ImageSource> sourceWithData(foundation::Value::Bytes bytes) = 0;
    virtual std::unique_ptr<ImageSource> sourceWithFile(std::string_view path) = 0;
    /// True when the file's bytes decode as a picture. Memory does not grow with the picture.
    virtual bool decodes(std::string_view path) = 0;
};

}  // namespace tavrolin::platform
