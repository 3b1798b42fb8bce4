#include "adapters/memory/memory_image_decoder.h"

#include <algorithm>
#include <cmath>

namespace tavrolin::adapters::memory {

platform::ImageRef MemoryImageSource::imageAtIndex(std::size_t index, std::uint32_t width,
                                                   std::uint32_t height) {
    requests_.push_back(std::to_string(index) + ": " + std::to_string(width) + "x" +
                        std::to_string(height));
    if (index >= frames_.size()) return nullptr;
    const Frame& frame = frames_[index];
    const double scale = std::min({1.0, static_cast<double>(width) / frame.width,
                                   static_cast<double>(height) / frame.height});
    const auto fitted = [scale](std::uint32_t side) {
        return std::max(1U, static_cast<std::uint32_t>(std::lround(side * scale)));
    };
    platform::Image image{fitted(frame.width), fitted(frame.height), {}};
    image.pixels.resize(std::size_t{image.width} * image.height * 4);
    return std::make_shared<platform::Image>(std::move(image));
}

std::optional<platform::ImageSource::GIFTiming> MemoryImageSource::gifTimingAtIndex(
    std::size_t index) {
    return index < frames_.size() ? frames_[index].timing : std::nullopt;
}

PictureKind pictureKindOf(foundation::Value::Bytes bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with("GIF87a") || text.starts_with("GIF89a")) return PictureKind::gif;
    if (text.starts_with("\xFF\xD8\xFF")) return PictureKind::jpeg;
    if (text.starts_with("\x89PNG\r\n\x1A\n")) return PictureKind::png;
    if (text.size() >= 12 && text.starts_with("RIFF") && text.substr(8, 4) == "WEBP") {
        return PictureKind::webp;
    }
    return PictureKind::none;
}

std::unique_ptr<platform::ImageSource> MemoryImageDecoder::sourceWithData(
    foundation::Value::Bytes bytes) {
    const PictureKind kind = pictureKindOf(bytes);
    if (kind == PictureKind::none) return nullptr;
    auto frames = frames_;
    if (kind == PictureKind::gif) {
        for (auto& frame : frames)
            frame.timing = frame.timing.value_or(platform::ImageSource::GIFTiming{0.1, 0.1});
    } else {
        frames.resize(1);
        frames[0].timing = std::nullopt;
    }
    return std::make_unique<MemoryImageSource>(std::move(frames));
}

std::unique_ptr<platform::ImageSource> MemoryImageDecoder::sourceWithFile(std::string_view path) {
    const auto bytes = files_.contents(path);
    return bytes ? sourceWithData(*bytes) : nullptr;
}

bool MemoryImageDecoder::decodes(std::string_view path) {
    return sourceWithFile(path) != nullptr;
}

}  // namespace tavrolin::adapters::memory
