#include <webp/decode.h>

#include <algorithm>
#include <array>

#include "adapters/images/formats.h"

namespace tavrolin::adapters::images {

namespace {

// Larger files than this are nobody's pictures; they are read into memory for decoding.
constexpr std::uint64_t kMaximumFile = 50U << 20U;
// Lossless pictures are decoded whole or not at all, so larger ones are believed for their header.
constexpr std::uint64_t kMaximumLosslessProbe = 1'000'000;
// A lossless picture of one colour takes a few bytes whatever its size.
constexpr std::uint64_t kPixelsPerByte = kMaximumPixels;
constexpr int kLossless = 2;

bool isReadable(const WebPBitstreamFeatures& features, std::uint64_t bytes) {
    return features.has_animation == 0 && features.width > 0 && features.height > 0 &&
           bytes <= kMaximumFile &&
           isReasonable(static_cast<std::uint64_t>(features.width),
                        static_cast<std::uint64_t>(features.height), bytes, kPixelsPerByte);
}

class Config {
public:
    Config() { valid_ = WebPInitDecoderConfig(&config) != 0; }
    ~Config() { WebPFreeDecBuffer(&config.output); }
    Config(const Config&) = delete;
    Config& operator=(const Config&) = delete;

    bool isValid() const { return valid_; }

    WebPDecoderConfig config{};

private:
    bool valid_ = false;
};

}  // namespace

PixelSize sizeOfWebP(const ByteSource& bytes) {
    ByteStream stream(bytes);
    const foundation::Value::Bytes block = stream.next();
    WebPBitstreamFeatures features{};
    if (WebPGetFeatures(block.data(), block.size(), &features) != VP8_STATUS_OK ||
        !isReadable(features, bytes.size()))
        return {};
    return {static_cast<std::uint32_t>(features.width),
            static_cast<std::uint32_t>(features.height)};
}

platform::ImageRef decodeWebP(const ByteSource& bytes, PixelSize bounds) {
    const PixelSize size = sizeOfWebP(bytes);
    Config held;
    if (size == PixelSize{} || !held.isValid()) return nullptr;
    std::vector<std::uint8_t> file(static_cast<std::size_t>(bytes.size()));
    file.resize(bytes.read(0, file.data(), file.size()));
    const PixelSize fitted = fittedSize(size, bounds);
    auto image = std::make_shared<platform::Image>();
    image->width = fitted.width;
    image->height = fitted.height;
    image->pixels.resize(std::size_t{image->width} * image->height * 4);
    WebPDecoderConfig& config = held.config;
    config.options.use_scaling = fitted == size ? 0 : 1;
    config.options.scaled_width = static_cast<int>(fitted.width);
    config.options.scaled_height = static_cast<int>(fitted.height);
    config.output.colorspace = MODE_RGBA;
    config.output.is_external_memory = 1;
    config.output.u.RGBA = {image->pixels.data(), static_cast<int>(fitted.width * 4),
                            image->pixels.size()};
    WebPIDecoder* decoder = WebPIDecode(nullptr, 0, &config);
    if (decoder == nullptr) return nullptr;
    const VP8StatusCode status = WebPIUpdate(decoder, file.data(), file.size());
    int rows = 0;
    WebPIDecGetRGB(decoder, &rows, nullptr, nullptr, nullptr);
    WebPIDelete(decoder);
    return status == VP8_STATUS_OK || rows > 0 ? image : nullptr;
}

bool webpBegins(const ByteSource& bytes) {
    ByteStream stream(bytes);
    foundation::Value::Bytes block = stream.next();
    Config held;
    WebPDecoderConfig& config = held.config;
    if (!held.isValid() ||
        WebPGetFeatures(block.data(), block.size(), &config.input) != VP8_STATUS_OK ||
        !isReadable(config.input, bytes.size()))
        return false;
    const auto pixels = static_cast<std::uint64_t>(config.input.width) *
                        static_cast<std::uint64_t>(config.input.height);
    if (config.input.format == kLossless && pixels > kMaximumLosslessProbe) return true;

    // Only the first rows are wanted, and only they get memory.
    config.options.use_cropping = 1;
    config.options.crop_width = config.input.width;
    config.options.crop_height = std::min(config.input.height, static_cast<int>(kFirstRows));
    config.output.colorspace = MODE_RGBA;
    WebPIDecoder* decoder = WebPIDecode(nullptr, 0, &config);
    if (decoder == nullptr) return false;
    VP8StatusCode status = VP8_STATUS_SUSPENDED;
    int rows = 0;
    while (status == VP8_STATUS_SUSPENDED && rows == 0 && !block.empty()) {
        status = WebPIAppend(decoder, block.data(), block.size());
        WebPIDecGetRGB(decoder, &rows, nullptr, nullptr, nullptr);
        block = stream.next();
    }
    WebPIDelete(decoder);
    return status == VP8_STATUS_OK || rows > 0;
}

}  // namespace tavrolin::adapters::images
