#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "adapters/images/formats.h"

namespace tavrolin::adapters::images {

using platform::Image;
using platform::ImageRef;
using platform::ImageSource;

namespace {

// A code of at most 12 bits stands for at most 4,095 pixels.
constexpr std::uint64_t kPixelsPerByte = 4096;
// For all frames of one pass together, whether on the canvas or not: bounds the time that a small
// file can take.
constexpr std::uint64_t kMaximumDecodedPixels = 1'000'000'000;

constexpr std::size_t kPixel = 4;

// What a frame covers of its canvas.
struct Area {
    // Positions are never negative: the file's numbers have no sign.
    static Area of(const GifImageDesc& frame, PixelSize canvas) {
        const auto left = std::min<std::size_t>(static_cast<std::size_t>(frame.Left), canvas.width);
        const auto top = std::min<std::size_t>(static_cast<std::size_t>(frame.Top), canvas.height);
        return {left, top,
                std::min<std::size_t>(static_cast<std::size_t>(frame.Width), canvas.width - left),
                std::min<std::size_t>(static_cast<std::size_t>(frame.Height), canvas.height - top)};
    }

    std::size_t left = 0;
    std::size_t top = 0;
    std::size_t width = 0;
    std::size_t height = 0;
};

// What stands before a frame about how it is shown.
struct Control {
    std::optional<GraphicsControlBlock> block;

    int transparentColor() const { return block ? block->TransparentColor : NO_TRANSPARENT_COLOR; }
    int disposal() const { return block ? block->DisposalMode : DISPOSAL_UNSPECIFIED; }
    ImageSource::GIFTiming timing() const {
        if (!block) return {};
        const double delay = block->DelayTime / 100.0;
        return {delay, delay < 0.02 ? 0.1 : delay};
    }
};

// One pass over a GIF's records. Operations return false when the file ends or is damaged.
class Pass {
public:
    explicit Pass(const ByteSource& bytes) : stream_(bytes) {
        int error = 0;
        gif_ = DGifOpen(&stream_, read, &error);
    }
    ~Pass() {
        int error = 0;
        if (gif_ != nullptr) DGifCloseFile(gif_, &error);
    }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    bool isOpen() const { return gif_ != nullptr; }
    const GifFileType& gif() const { return *gif_; }
    const GifImageDesc& frame() const { return gif_->Image; }
    const Control& control() const { return control_; }

    /// Goes on to the next frame's description. The frame before it must have been read or skipped.
    bool nextFrame() {
        control_ = {};
        while (isOpen()) {
            GifRecordType record = UNDEFINED_RECORD_TYPE;
            if (DGifGetRecordType(gif_, &record) == GIF_ERROR) return false;
            if (record == IMAGE_DESC_RECORD_TYPE) {
                if (DGifGetImageDesc(gif_) == GIF_ERROR) return false;
                decoded_ += static_cast<std::uint64_t>(frame().Width) *
                            static_cast<std::uint64_t>(frame().Height);
                return frame().Width > 0 && frame().Height > 0 && decoded_ <= kMaximumDecodedPixels;
            }
            if (record != EXTENSION_RECORD_TYPE || !readExtension()) return false;
        }
        return false;
    }
    bool skipFrame() {
        int codeSize = 0;
        GifByteType* block = nullptr;
        if (DGifGetCode(gif_, &codeSize, &block) == GIF_ERROR) return false;
        while (block != nullptr) {
            if (DGifGetCodeNext(gif_, &block) == GIF_ERROR) return false;
        }
        return true;
    }
    /// The next row of the frame, in the order of the file: `frame().Width` numbers of colours.
    bool readRow(std::vector<std::uint8_t>& row) {
        row.resize(static_cast<std::size_t>(frame().Width));
        return DGifGetLine(gif_, row.data(), frame().Width) != GIF_ERROR;
    }

private:
    static int read(GifFileType* gif, GifByteType* to, int count) {
        auto* stream = static_cast<ByteStream*>(gif->UserData);
        return static_cast<int>(stream->read(to, static_cast<std::size_t>(std::max(count, 0))));
    }

    bool readExtension() {
        int code = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(gif_, &code, &block) == GIF_ERROR) return false;
        while (block != nullptr) {
            GraphicsControlBlock control{};
            // The block's own length comes first.
            if (code == GRAPHICS_EXT_FUNC_CODE &&
                DGifExtensionToGCB(block[0], block + 1, &control) != GIF_ERROR)
                control_.block = control;
            if (DGifGetExtensionNext(gif_, &block) == GIF_ERROR) return false;
        }
        return true;
    }

    ByteStream stream_;
    GifFileType* gif_ = nullptr;
    Control control_;
    std::uint64_t decoded_ = 0;
};

bool canvasIsReasonable(const Pass& pass, const ByteSource& bytes) {
    return pass.isOpen() && pass.gif().SWidth > 0 && pass.gif().SHeight > 0 &&
           isReasonable(static_cast<std::uint64_t>(pass.gif().SWidth),
                        static_cast<std::uint64_t>(pass.gif().SHeight), bytes.size(),
                        kPixelsPerByte);
}

// The rows of a frame in the order in which the file holds them.
class RowOrder {
public:
    explicit RowOrder(const GifImageDesc& frame)
        : height_(static_cast<std::size_t>(frame.Height)), interlaced_(frame.Interlace) {}

    std::size_t row() const { return row_; }
    void advance() {
        if (!interlaced_) {
            ++row_;
            return;
        }
        static constexpr std::size_t kSteps[] = {8, 8, 4, 2};
        static constexpr std::size_t kStarts[] = {0, 4, 2, 1};
        row_ += kSteps[pass_];
        while (row_ >= height_ && pass_ < 3)
            row_ = kStarts[++pass_];
    }

private:
    std::size_t height_;
    bool interlaced_;
    std::size_t row_ = 0;
    std::size_t pass_ = 0;
};

// What a frame's numbers of colours mean: pixels, all zero where nothing is drawn.
class Palette {
public:
    /// Of the pass's present frame; nothing when it has no colours.
    static std::optional<Palette> of(const Pass& pass) {
        const ColorMapObject* map =
            pass.frame().ColorMap != nullptr ? pass.frame().ColorMap : pass.gif().SColorMap;
        if (map == nullptr) return std::nullopt;
        Palette palette;
        const auto count = static_cast<std::size_t>(std::clamp(map->ColorCount, 0, 256));
        for (std::size_t i = 0; i < count; ++i) {
            const GifColorType& rgb = map->Colors[i];
            palette.pixels_[i] = {rgb.Red, rgb.Green, rgb.Blue, 255};
        }
        const int transparent = pass.control().transparentColor();
        if (transparent != NO_TRANSPARENT_COLOR)
            palette.pixels_[static_cast<std::uint8_t>(transparent)] = {};
        return palette;
    }

    void draw(const std::uint8_t* colors, std::size_t count, std::uint8_t* to) const {
        for (std::size_t x = 0; x < count; ++x, to += kPixel) {
            const Pixel& pixel = pixels_[colors[x]];
            if (pixel[3] != 0) std::memcpy(to, pixel.data(), kPixel);
        }
    }

private:
    using Pixel = std::array<std::uint8_t, kPixel>;
    std::array<Pixel, 256> pixels_{};
};

// The picture as it builds up, frame by frame.
class Canvas {
public:
    explicit Canvas(PixelSize size) {
        image_.width = size.width;
        image_.height = size.height;
        image_.pixels.resize(std::size_t{size.width} * size.height * kPixel);
    }

    const Image& image() const { return image_; }

    /// Takes the last frame away as that frame asked for, and gets ready for the next one.
    void beginFrame(const GifImageDesc& frame, int disposal) {
        dispose();
        area_ = Area::of(frame, {image_.width, image_.height});
        disposal_ = disposal;
        kept_.clear();
        if (disposal_ != DISPOSE_PREVIOUS) return;
        kept_.reserve(area_.width * area_.height * kPixel);
        for (std::size_t y = 0; y < area_.height; ++y) {
            const std::uint8_t* row = at(area_.left, area_.top + y);
            kept_.insert(kept_.end(), row, row + area_.width * kPixel);
        }
    }
    void drawRow(std::size_t y, const std::vector<std::uint8_t>& colors, const Palette& palette) {
        if (y < area_.height)
            palette.draw(colors.data(), area_.width, at(area_.left, area_.top + y));
    }

private:
    std::uint8_t* at(std::size_t x, std::size_t y) {
        return image_.pixels.data() + (y * image_.width + x) * kPixel;
    }

    void dispose() {
        // Players clear to nothing rather than to the file's background colour.
        if (disposal_ == DISPOSE_BACKGROUND) {
            for (std::size_t y = 0; y < area_.height; ++y)
                std::fill_n(at(area_.left, area_.top + y), area_.width * kPixel, std::uint8_t{0});
        } else if (disposal_ == DISPOSE_PREVIOUS) {
            for (std::size_t y = 0; y < area_.height; ++y) {
                std::copy_n(kept_.data() + y * area_.width * kPixel, area_.width * kPixel,
                            at(area_.left, area_.top + y));
            }
        }
    }

    Image image_;
    Area area_;
    int disposal_ = DISPOSAL_UNSPECIFIED;
    std::vector<std::uint8_t> kept_;  // what the last frame covered, if it is to come back
};

// Calls `take(y, colors)` for each row of the pass's frame, in the order of the file, and returns
// how many came.
template <class Take>
int readRows(Pass& pass, Take take) {
    std::vector<std::uint8_t> colors;
    RowOrder order(pass.frame());
    for (int i = 0; i < pass.frame().Height; ++i, order.advance()) {
        if (!pass.readRow(colors)) return i;
        take(order.row(), colors);
    }
    return pass.frame().Height;
}

class GIFSource : public ImageSource {
public:
    explicit GIFSource(std::unique_ptr<ByteSource> bytes) : bytes_(std::move(bytes)) { scan(); }

    std::size_t count() const override { return timings_.size(); }
    std::uint32_t width() const override { return size_.width; }
    std::uint32_t height() const override { return size_.height; }

    ImageRef imageAtIndex(std::size_t index, std::uint32_t width, std::uint32_t height) override {
        if (index >= count()) return nullptr;
        const PixelSize fitted = fittedSize(size_, {width, height});
        if (index == 0 && fitted != size_) return firstFrame(fitted);
        return drawTo(index) ? reduced(canvas_->image(), fitted) : nullptr;
    }

    void forgetFrames() override {
        pass_.reset();
        canvas_.reset();
    }

    std::optional<GIFTiming> gifTimingAtIndex(std::size_t index) override {
        if (index >= count()) return std::nullopt;
        return timings_[index];
    }

private:
    // Counts the frames without decoding them.
    void scan() {
        Pass pass(*bytes_);
        if (!canvasIsReasonable(pass, *bytes_)) return;
        size_ = {static_cast<std::uint32_t>(pass.gif().SWidth),
                 static_cast<std::uint32_t>(pass.gif().SHeight)};
        while (timings_.size() < kMaximumFrames && pass.nextFrame()) {
            const bool isWhole = pass.skipFrame();
            if (isWhole || timings_.empty()) timings_.push_back(pass.control().timing());
            if (!isWhole) break;
        }
        decodable_ = count();
    }

    // Made smaller row by row, without a canvas.
    ImageRef firstFrame(PixelSize fitted) const {
        Pass pass(*bytes_);
        if (!pass.nextFrame()) return nullptr;
        const std::optional<Palette> palette = Palette::of(pass);
        if (!palette) return nullptr;
        const Area area = Area::of(pass.frame(), size_);
        std::vector<std::uint8_t> row(std::size_t{size_.width} * kPixel);
        const auto take = [&](const auto& add) {
            return readRows(pass, [&](std::size_t y, const std::vector<std::uint8_t>& colors) {
                if (y >= area.height) return;
                std::ranges::fill(row, std::uint8_t{0});
                palette->draw(colors.data(), area.width, row.data() + area.left * kPixel);
                add(static_cast<std::uint32_t>(area.top + y));
            });
        };
        if (pass.frame().Interlace) {
            ScatteredReduction reduction(size_, fitted);
            const int rows = take(
                [&](std::uint32_t y) { reduction.addPixels(row.data(), size_.width, y, 0, 1); });
            return rows > 0 ? reduction.take() : nullptr;
        }
        Reduction reduction(size_, fitted);
        for (std::size_t y = 0; y < area.top; ++y)
            reduction.addRow(row.data());
        const int rows = take([&](std::uint32_t) { reduction.addRow(row.data()); });
        return rows > 0 ? reduction.take() : nullptr;
    }

    // Makes the canvas show this frame, or what stood before it where it can't be decoded.
    bool drawTo(std::size_t index) {
        const auto wanted = [&] { return std::min(index + 1, decodable_); };
        if (!pass_ || drawn_ > wanted()) restart();
        while (drawn_ < wanted()) {
            if (drawNext()) continue;
            decodable_ = drawn_;
            restart();  // the canvas may show a part of the one that failed
        }
        return decodable_ > 0;
    }

    void restart() {
        pass_.emplace(*bytes_);
        canvas_.emplace(size_);
        drawn_ = 0;
    }

    bool drawNext() {
        if (!pass_->nextFrame()) return false;
        const std::optional<Palette> palette = Palette::of(*pass_);
        if (!palette) return false;
        canvas_->beginFrame(pass_->frame(), pass_->control().disposal());
        const int rows = readRows(*pass_, [&](std::size_t y, const auto& colors) {
            canvas_->drawRow(y, colors, *palette);
        });
        if (rows < pass_->frame().Height) {
            if (drawn_ > 0 || rows == 0) return false;
            decodable_ = 1;  // part of a first frame is better than nothing
        }
        ++drawn_;
        return true;
    }

    std::unique_ptr<ByteSource> bytes_;
    PixelSize size_;
    std::vector<GIFTiming> timings_;  // one for each frame
    std::size_t decodable_ = 0;       // so many frames, as far as is known

    std::optional<Pass> pass_;
    std::optional<Canvas> canvas_;
    std::size_t drawn_ = 0;  // the canvas shows the frame before this one
};

}  // namespace

std::unique_ptr<ImageSource> openGIF(std::unique_ptr<ByteSource> bytes) {
    auto source = std::make_unique<GIFSource>(std::move(bytes));
    return source->count() > 0 ? std::move(source) : nullptr;
}

bool gifBegins(const ByteSource& bytes) {
    Pass pass(bytes);
    if (!canvasIsReasonable(pass, bytes) || !pass.nextFrame() || !Palette::of(pass)) return false;
    std::vector<std::uint8_t> row;
    for (int i = 0; i < std::min(pass.frame().Height, static_cast<int>(kFirstRows)); ++i) {
        if (!pass.readRow(row)) return false;
    }
    return true;
}

}  // namespace tavrolin::adapters::images
