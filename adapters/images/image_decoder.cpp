#include "adapters/images/image_decoder.h"

#include <array>
#include <utility>

#include "adapters/images/formats.h"

namespace tavrolin::adapters::images {

using platform::ImageRef;
using platform::ImageSource;

namespace {

enum class Format { none, gif, jpeg, png, webp };

Format formatOf(const ByteSource& bytes) {
    std::array<char, 12> head{};
    const std::size_t got =
        bytes.read(0, reinterpret_cast<std::uint8_t*>(head.data()), head.size());
    const std::string_view text(head.data(), got);
    if (text.starts_with("GIF87a") || text.starts_with("GIF89a")) return Format::gif;
    if (text.starts_with("\xFF\xD8\xFF")) return Format::jpeg;
    if (text.starts_with("\x89PNG\r\n\x1A\n")) return Format::png;
    if (text.starts_with("RIFF") && text.ends_with("WEBP")) return Format::webp;
    return Format::none;
}

bool begins(Format format, const ByteSource& bytes) {
    switch (format) {
        case Format::gif:
            return gifBegins(bytes);
        case Format::jpeg:
            return jpegBegins(bytes);
        case Format::png:
            return pngBegins(bytes);
        case Format::webp:
            return webpBegins(bytes);
        case Format::none:
            break;
    }
    return false;
}

// What a kind of still picture can do.
struct Still {
    PixelSize (*size)(const ByteSource&);
    ImageRef (*decode)(const ByteSource&, PixelSize bounds);
};
constexpr Still kJPEG = {sizeOfJPEG, decodeJPEG};
constexpr Still kPNG = {sizeOfPNG, decodePNG};
constexpr Still kWebP = {sizeOfWebP, decodeWebP};

// One picture, decoded when it is asked for.
class StillSource : public ImageSource {
public:
    StillSource(std::unique_ptr<ByteSource> bytes, const Still& still)
        : bytes_(std::move(bytes)), still_(still), size_(still.size(*bytes_)) {}

    std::size_t count() const override { return 1; }
    std::uint32_t width() const override { return size_.width; }
    std::uint32_t height() const override { return size_.height; }
    ImageRef imageAtIndex(std::size_t index, std::uint32_t width, std::uint32_t height) override {
        return index == 0 ? still_.decode(*bytes_, {width, height}) : nullptr;
    }
    std::optional<GIFTiming> gifTimingAtIndex(std::size_t) override { return std::nullopt; }

private:
    std::unique_ptr<ByteSource> bytes_;
    const Still& still_;
    PixelSize size_;
};

std::unique_ptr<ImageSource> open(std::unique_ptr<ByteSource> bytes) {
    if (!bytes) return nullptr;
    const Format format = formatOf(*bytes);
    if (!begins(format, *bytes)) return nullptr;
    if (format == Format::gif) return openGIF(std::move(bytes));
    const Still& still = format == Format::jpeg ? kJPEG : format == Format::png ? kPNG : kWebP;
    return std::make_unique<StillSource>(std::move(bytes), still);
}

}  // namespace

std::unique_ptr<ImageSource> ImageDecoder::sourceWithData(foundation::Value::Bytes bytes) {
    return open(memorySource(bytes));
}

std::unique_ptr<ImageSource> ImageDecoder::sourceWithFile(std::string_view path) {
    return open(fileSource(path));
}

bool ImageDecoder::decodes(std::string_view path) {
    const std::unique_ptr<ByteSource> bytes = fileSource(path);
    return bytes && begins(formatOf(*bytes), *bytes);
}

}  // namespace tavrolin::adapters::images
