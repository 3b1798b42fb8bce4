#include <png.h>

#include <algorithm>
#include <csetjmp>

#include "adapters/images/formats.h"

namespace tavrolin::adapters::images {

namespace {

// What deflate reaches at one bit a pixel.
constexpr std::uint64_t kPixelsPerByte = 8256;
// For one chunk of text or colour profile, and for how many are kept.
constexpr png_alloc_size_t kMaximumChunk = 1U << 20U;
constexpr png_uint_32 kMaximumChunks = 64;

// One pass over a PNG. The library reports errors by a jump: nothing between `attempt` and the
// library may have a destructor.
class Reading {
public:
    explicit Reading(const ByteSource& bytes) : size_(bytes.size()), stream_(bytes) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, fail, [](png_structp, auto) {});
        if (png_ == nullptr) return;
        info_ = png_create_info_struct(png_);
        png_set_read_fn(png_, this, read);
        png_set_user_limits(png_, kMaximumPixels, kMaximumPixels);
        png_set_chunk_malloc_max(png_, kMaximumChunk);
        png_set_chunk_cache_max(png_, kMaximumChunks);
    }
    ~Reading() { png_destroy_read_struct(&png_, &info_, nullptr); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    /// Reads the header and asks for rows of `width` pixels of 4 bytes. An interlaced picture's
    /// rows come once for each pass, each filling in what it brings; or, `bare`, with the pass's
    /// own pixels only.
    bool start(bool bare = false) {
        if (info_ == nullptr || !attempt([this] { png_read_info(png_, info_); })) return false;
        if (!isReasonable(width(), height(), size_, kPixelsPerByte)) return false;
        return attempt([this, bare] {
                   png_set_expand(png_);
                   png_set_scale_16(png_);
                   png_set_gray_to_rgb(png_);
                   png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
                   passes_ = bare ? 1 : png_set_interlace_handling(png_);
                   png_read_update_info(png_, info_);
               }) &&
               png_get_rowbytes(png_, info_) == std::size_t{width()} * 4;
    }
    std::uint32_t width() const { return png_get_image_width(png_, info_); }
    std::uint32_t height() const { return png_get_image_height(png_, info_); }
    int passes() const { return passes_; }

    bool readRow(std::uint8_t* row) {
        return attempt([this, row] { png_read_row(png_, row, nullptr); });
    }

private:
    static Reading& of(png_structp png) { return *static_cast<Reading*>(png_get_io_ptr(png)); }

    [[noreturn]] static void fail(png_structp png, png_const_charp) {
        std::longjmp(static_cast<Reading*>(png_get_error_ptr(png))->jump_, 1);
    }
    static void read(png_structp png, png_bytep to, std::size_t count) {
        if (of(png).stream_.read(to, count) != count) png_error(png, "cut short");
    }

    template <class Step>
    bool attempt(Step step) {
        if (setjmp(jump_) != 0) return false;
        step();
        return true;
    }

    std::uint64_t size_;
    ByteStream stream_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::jmp_buf jump_{};
    int passes_ = 1;
};

platform::ImageRef decodeWhole(const ByteSource& bytes) {
    Reading png(bytes);
    if (!png.start()) return nullptr;
    auto image = std::make_shared<platform::Image>();
    image->width = png.width();
    image->height = png.height();
    const std::size_t rowBytes = std::size_t{image->width} * 4;
    image->pixels.resize(rowBytes * image->height);
    for (int pass = 0; pass < png.passes(); ++pass) {
        for (std::uint32_t y = 0; y < image->height; ++y) {
            if (png.readRow(image->pixels.data() + y * rowBytes)) continue;
            return pass == 0 && y == 0 ? nullptr : image;
        }
    }
    return image;
}

// The rows of an interlaced picture are whole only with the last pass, and all of them take memory
// for all of it: where much less is shown, its pixels are summed up as they come.
platform::ImageRef decodeInterlaced(const ByteSource& bytes, PixelSize fitted) {
    constexpr std::uint64_t kWorthwhile = 4;
    Reading png(bytes);
    if (!png.start(true)) return nullptr;
    const PixelSize size = {png.width(), png.height()};
    if (std::uint64_t{fitted.width} * fitted.height * kWorthwhile >
        std::uint64_t{size.width} * size.height) {
        const platform::ImageRef whole = decodeWhole(bytes);
        return whole ? reduced(*whole, fitted) : nullptr;
    }
    ScatteredReduction reduction(size, fitted);
    std::vector<std::uint8_t> row(std::size_t{size.width} * 4);
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
        const auto count = static_cast<std::uint32_t>(PNG_PASS_COLS(size.width, pass));
        const auto rows = static_cast<std::uint32_t>(PNG_PASS_ROWS(size.height, pass));
        for (std::uint32_t i = 0; count > 0 && i < rows; ++i) {
            if (!png.readRow(row.data())) return pass == 0 && i == 0 ? nullptr : reduction.take();
            reduction.addPixels(row.data(), count, PNG_ROW_FROM_PASS_ROW(i, pass),
                                PNG_PASS_START_COL(pass), PNG_PASS_COL_OFFSET(pass));
        }
    }
    return reduction.take();
}

}  // namespace

PixelSize sizeOfPNG(const ByteSource& bytes) {
    Reading png(bytes);
    return png.start() ? PixelSize{png.width(), png.height()} : PixelSize{};
}

platform::ImageRef decodePNG(const ByteSource& bytes, PixelSize bounds) {
    Reading png(bytes);
    if (!png.start()) return nullptr;
    const PixelSize size = {png.width(), png.height()};
    const PixelSize fitted = fittedSize(size, bounds);
    if (png.passes() > 1) return decodeInterlaced(bytes, fitted);
    Reduction reduction(size, fitted);
    std::vector<std::uint8_t> row(std::size_t{size.width} * 4);
    for (std::uint32_t y = 0; y < size.height; ++y) {
        if (!png.readRow(row.data())) {
            if (y == 0) return nullptr;
            break;
        }
        reduction.addRow(row.data());
    }
    return reduction.take();
}

bool pngBegins(const ByteSource& bytes) {
    Reading png(bytes);
    if (!png.start()) return false;
    std::vector<std::uint8_t> row(std::size_t{png.width()} * 4);
    for (std::uint32_t y = 0; y < std::min(png.height(), kFirstRows); ++y) {
        if (!png.readRow(row.data())) return false;
    }
    return true;
}

}  // namespace tavrolin::adapters::images
