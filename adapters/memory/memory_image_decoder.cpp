#include "adapters/memory/memory_image_decoder.h"

namespace tavrolin::adapters::memory {

namespace {

class Source final : public platform::ImageSource {
public:
    explicit Source(PictureKind kind) : kind_(kind) {}

    std::size_t count() const override { return 1; }
    std::uint32_t width() const override { return 1; }
    std::uint32_t height() const override { return 1; }
    platform::ImageRef imageAtIndex(std::size_t index, std::uint32_t, std::uint32_t) override {
        if (index > 0) return nullptr;
        return std::make_shared<platform::Image>(
            platform::Image{1, 1, std::vector<std::uint8_t>(4)});
    }
    std::optional<GIFTiming> gifTimingAtIndex(std::size_t index) override {
        if (index > 0 || kind_ != PictureKind::gif) return std::nullopt;
        return GIFTiming{0.1, 0.1};
    }

private:
    PictureKind kind_;
};

}  // namespace

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
    return kind == PictureKind::none ? nullptr : std::make_unique<Source>(kind);
}

std::unique_ptr<platform::ImageSource> MemoryImageDecoder::sourceWithFile(std::string_view path) {
    const auto bytes = files_.contents(path);
    return bytes ? sourceWithData(*bytes) : nullptr;
}

bool MemoryImageDecoder::decodes(std::string_view path) {
    return sourceWithFile(path) != nullptr;
}

}  // namespace tavrolin::adapters::memory
