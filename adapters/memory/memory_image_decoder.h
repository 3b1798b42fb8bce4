#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tavrolin/platform/files.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::adapters::memory {

enum class PictureKind { none, gif, jpeg, png, webp };

/// What kind of picture the bytes begin as.
PictureKind pictureKindOf(foundation::Value::Bytes bytes);

/// A picture of frames that a test makes up, of transparent pixels, made to fit as they are asked
/// for. One thread at a time.
class MemoryImageSource final : public platform::ImageSource {
public:
    struct Frame {
        std::uint32_t width = 1;
        std::uint32_t height = 1;
        std::optional<GIFTiming> timing = std::nullopt;
    };

    explicit MemoryImageSource(std::vector<Frame> frames) : frames_(std::move(frames)) {}

    /// What was decoded since the last time, each as "index: widthxheight" with the size that was
    /// asked for.
    std::vector<std::string> takeRequests() { return std::exchange(requests_, {}); }

    std::size_t count() const override { return frames_.size(); }
    std::uint32_t width() const override { return frames_.empty() ? 0 : frames_[0].width; }
    std::uint32_t height() const override { return frames_.empty() ? 0 : frames_[0].height; }
    platform::ImageRef imageAtIndex(std::size_t index, std::uint32_t width,
                                    std::uint32_t height) override;
    std::optional<GIFTiming> gifTimingAtIndex(std::size_t index) override;

private:
    std::vector<Frame> frames_;
    std::vector<std::string> requests_;
};

/// Takes whatever begins like a GIF, a JPEG, a PNG or a WebP for a picture of one pixel, or of the
/// frames that it was told; a GIF's frame lasts a tenth of a second where nothing else is said, and
/// other pictures have the first one only. Threads: any, once the frames are set.
class MemoryImageDecoder final : public platform::ImageDecoder {
public:
    /// The files must outlive the decoder.
    explicit MemoryImageDecoder(const platform::Files& files) : files_(files) {}

    /// Holds for pictures that are opened later.
    void setFrames(std::vector<MemoryImageSource::Frame> frames) { frames_ = std::move(frames); }

    std::unique_ptr<platform::ImageSource> sourceWithData(foundation::Value::Bytes bytes) override;
    std::unique_ptr<platform::ImageSource> sourceWithFile(std::string_view path) override;
    bool decodes(std::string_view path) override;

private:
    const platform::Files& files_;
    std::vector<MemoryImageSource::Frame> frames_{{}};
};

}  // namespace tavrolin::adapters::memory
