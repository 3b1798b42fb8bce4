#include "tests/support/pictures.h"

#include <png.h>
#include <webp/encode.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <stdexcept>

// Does not include what it needs itself.
#include <jpeglib.h>

namespace tavrolin::test {

namespace {

using Pixels = std::vector<std::uint8_t>;  // red, green, blue, alpha

Pixels drawn(unsigned width, unsigned height, int noise) {
    std::minstd_rand random(1);
    std::uniform_int_distribution<int> spread(-noise, noise);
    const auto shade = [](unsigned at, unsigned of) {
        return static_cast<int>(of < 2 ? 0 : at * 255 / (of - 1));
    };
    Pixels pixels;
    pixels.reserve(std::size_t{width} * height * 4);
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            for (const int value : {shade(x, width), shade(y, height), 128}) {
                const int noisy = noise == 0 ? value : value + spread(random);
                pixels.push_back(static_cast<std::uint8_t>(std::clamp(noisy, 0, 255)));
            }
            pixels.push_back(x < width / 2 ? 128 : 255);
        }
    }
    return pixels;
}

// More noise makes more bytes.
std::string ofAbout(std::size_t bytes, const std::function<std::string(int noise)>& encode) {
    std::string file = encode(0);
    int low = 0;
    int high = 255;
    while (file.size() < bytes && high - low > 1) {
        const int middle = (low + high) / 2;
        std::string larger = encode(middle);
        if (larger.size() > bytes) {
            high = middle;
        } else {
            low = middle;
        }
        if (high - low <= 1) file = std::move(larger);
    }
    return file;
}

std::string encodedJPEG(unsigned width, unsigned height, const Pixels& pixels, bool progressive) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &memory, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = 4;
    info.in_color_space = JCS_EXT_RGBA;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 90, TRUE);
    if (progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    for (unsigned y = 0; y < height; ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(pixels.data()) + std::size_t{y} * width * 4;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    std::string file(reinterpret_cast<const char*>(memory), size);
    jpeg_destroy_compress(&info);
    std::free(memory);
    return file;
}

std::string encodedPNG(unsigned width, unsigned height, Pixels pixels, bool interlaced) {
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp self, png_bytep bytes, std::size_t count) {
            static_cast<std::string*>(png_get_io_ptr(self))
                ->append(reinterpret_cast<const char*>(bytes), count);
        },
        nullptr);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGBA,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    std::vector<png_bytep> rows;
    for (unsigned y = 0; y < height; ++y)
        rows.push_back(pixels.data() + std::size_t{y} * width * 4);
    png_set_rows(png, info, rows.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

std::string encodedWebP(unsigned width, unsigned height, const Pixels& pixels, bool lossless) {
    std::uint8_t* memory = nullptr;
    const int stride = static_cast<int>(width * 4);
    const auto w = static_cast<int>(width);
    const auto h = static_cast<int>(height);
    const std::size_t size = lossless ? WebPEncodeLosslessRGBA(pixels.data(), w, h, stride, &memory)
                                      : WebPEncodeRGBA(pixels.data(), w, h, stride, 90, &memory);
    std::string file(reinterpret_cast<const char*>(memory), size);
    WebPFree(memory);
    return file;
}

// --- GIF ----------------------------------------------------------------------------------------

constexpr std::string_view kLetters = "rgbwk.";
constexpr std::array<std::array<std::uint8_t, 3>, 8> kColors = {
    {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}, {0, 0, 0}, {9, 9, 9}}};
constexpr std::uint8_t kTransparent = 5;
constexpr unsigned kBits = 3;  // a colour

void appendByte(std::string& out, unsigned value) {
    out += static_cast<char>(value);
}
void append16(std::string& out, unsigned value) {
    appendByte(out, value & 0xFFU);
    appendByte(out, value >> 8U);
}

std::vector<unsigned> rowsInFileOrder(const GIFFrame& frame) {
    std::vector<unsigned> rows;
    if (!frame.interlaced) {
        for (unsigned y = 0; y < frame.height; ++y)
            rows.push_back(y);
        return rows;
    }
    constexpr std::array<std::pair<unsigned, unsigned>, 4> kPasses = {
        {{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
    for (const auto& [start, step] : kPasses) {
        for (unsigned y = start; y < frame.height; y += step)
            rows.push_back(y);
    }
    return rows;
}

// Codes of a fixed width: a clear code before the table could grow beyond it.
void appendImageData(std::string& out, const GIFFrame& frame) {
    constexpr unsigned kClear = 1U << kBits;
    std::string data;
    unsigned held = 0;
    unsigned heldBits = 0;
    const auto put = [&](unsigned code) {
        held |= code << heldBits;
        heldBits += kBits + 1;
        while (heldBits >= 8) {
            appendByte(data, held & 0xFFU);
            held >>= 8U;
            heldBits -= 8;
        }
    };
    std::size_t count = 0;
    for (const unsigned y : rowsInFileOrder(frame)) {
        for (unsigned x = 0; x < frame.width; ++x) {
            if (count++ % 4 == 0) put(kClear);
            const std::size_t color = kLetters.find(frame.letters.at(y * frame.width + x));
            if (color == std::string_view::npos) throw std::invalid_argument(frame.letters);
            put(static_cast<unsigned>(color));
        }
    }
    put(kClear + 1);
    if (heldBits > 0) appendByte(data, held);

    appendByte(out, kBits);
    for (std::size_t at = 0; at < data.size(); at += 255) {
        const std::string block = data.substr(at, 255);
        appendByte(out, static_cast<unsigned>(block.size()));
        out += block;
    }
    appendByte(out, 0);
}

}  // namespace

std::string jpeg(unsigned width, unsigned height, const PictureOptions& options) {
    return ofAbout(options.bytes, [&](int noise) {
        return encodedJPEG(width, height, drawn(width, height, noise), options.fancy);
    });
}

std::string png(unsigned width, unsigned height, const PictureOptions& options) {
    return ofAbout(options.bytes, [&](int noise) {
        return encodedPNG(width, height, drawn(width, height, noise), options.fancy);
    });
}

std::string webp(unsigned width, unsigned height, const PictureOptions& options) {
    return ofAbout(options.bytes, [&](int noise) {
        return encodedWebP(width, height, drawn(width, height, noise), options.fancy);
    });
}

std::string gif(unsigned width, unsigned height, const std::vector<GIFFrame>& frames) {
    std::string out = "GIF89a";
    append16(out, width);
    append16(out, height);
    appendByte(out, 0x80U | (kBits - 1));  // with a global table of colours
    append16(out, 0);                      // background and aspect
    for (const auto& color : kColors) {
        for (const std::uint8_t channel : color)
            appendByte(out, channel);
    }
    for (const GIFFrame& frame : frames) {
        if (frame.delay) {
            out += "\x21\xF9\x04";
            appendByte(out, frame.disposal << 2U | 1U);
            append16(out, *frame.delay);
            appendByte(out, kTransparent);
            appendByte(out, 0);
        }
        out += ',';
        append16(out, frame.left);
        append16(out, frame.top);
        append16(out, frame.width);
        append16(out, frame.height);
        appendByte(out, frame.interlaced ? 0x40 : 0);
        appendImageData(out, frame);
    }
    return out + ';';
}

GIFFrame plainFrame(unsigned width, unsigned height, char letter, std::optional<unsigned> delay) {
    return {std::string(std::size_t{width} * height, letter), 0, 0, width, height, delay};
}

std::string letters(const std::vector<std::uint8_t>& rgba) {
    std::string text;
    for (std::size_t i = 0; i + 3 < rgba.size(); i += 4) {
        const std::array<std::uint8_t, 3> color = {rgba[i], rgba[i + 1], rgba[i + 2]};
        const auto* found = std::find(kColors.begin(), kColors.begin() + kTransparent, color);
        const auto index = static_cast<std::size_t>(found - kColors.begin());
        text += rgba[i + 3] == 0 ? '.' : index == kTransparent ? '?' : kLetters[index];
    }
    return text;
}

}  // namespace tavrolin::test
