#include <gif_lib.h>

#include <algorithm>
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

// A rectangle of the canvas, cut to it.
struct Area {
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
        for (;;) {
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

// The picture as it builds up, frame by frame.
class Canvas {
public:
    Canvas(std::uint32_t width, std::uint32_t height) {
        image_.width = width;
        image_.height = height;
        image_.pixels.resize(std::size_t{width} * height * kPixel);
    }

    const Image& image() const { return image_; }

    /// Takes the last frame away as that frame asked for, and gets ready for the next one.
    void beginFrame(const GifImageDesc& frame, int disposal) {
        dispose();
        area_ = cut(frame);
        disposal_ = disposal;
        kept_.clear();
        if (disposal_ != DISPOSE_PREVIOUS) return;
        kept_.reserve(area_.width * area_.height * kPixel);
        for (std::size_t y = 0; y < area_.height; ++y) {
            const std::uint8_t* row = at(area_.left, area_.top + y);
            kept_.insert(kept_.end(), row, row + area_.width * kPixel);
        }
    }
    void drawRow(std::size_t y, const std::vector<std::uint8_t>& colors, const ColorMapObject& map,
                 int transparent) {
        if (y >= area_.height) return;
        std::uint8_t* to = at(area_.left, area_.top + y);
        for (std::size_t x = 0; x < area_.width; ++x, to += kPixel) {
            const int color = colors[x];
            if (color == transparent || color >= map.ColorCount) continue;
            const GifColorType& rgb = map.Colors[color];
            to[0] = rgb.Red;
            to[1] = rgb.Green;
            to[2] = rgb.Blue;
            to[3] = 255;
        }
    }

private:
    std::uint8_t* at(std::size_t x, std::size_t y) {
        return image_.pixels.data() + (y * image_.width + x) * kPixel;
    }

    // Positions are never negative: the file's numbers have no sign.
    Area cut(const GifImageDesc& frame) const {
        const auto left = std::min<std::size_t>(static_cast<std::size_t>(frame.Left), image_.width);
        const auto top = std::min<std::size_t>(static_cast<std::size_t>(frame.Top), image_.height);
        return {left, top,
                std::min<std::size_t>(static_cast<std::size_t>(frame.Width), image_.width - left),
                std::min<std::size_t>(static_cast<std::size_t>(frame.Height), image_.height - top)};
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

const ColorMapObject* colorsOf(const Pass& pass) {
    return pass.frame().ColorMap != nullptr ? pass.frame().ColorMap : pass.gif().SColorMap;
}

class GIFSource : public ImageSource {
public:
    explicit GIFSource(std::unique_ptr<ByteSource> bytes) : bytes_(std::move(bytes)) { scan(); }

    std::size_t count() const override { return timings_.size(); }

    ImageRef imageAtIndex(std::size_t index) override {
        if (index >= count()) return nullptr;
        if (index + 1 < drawn_ || !pass_) restart();
        while (drawn_ <= index) {
            if (isBroken_ || !drawNext()) return nullptr;
        }
        return std::make_shared<Image>(canvas_->image());
    }

    std::optional<GIFTiming> gifTimingAtIndex(std::size_t index) override {
        if (index >= count()) return std::nullopt;
        return timings_[index];
    }
    std::uint32_t width() const override { return size_.width; }
    std::uint32_t height() const override { return size_.height; }
    ImageRef imageFitting(std::uint32_t width, std::uint32_t height) override {
        const PixelSize fitted = fittedSize(size_, {width, height});
        const ImageRef first = imageAtIndex(0);
        return first && fitted != size_ ? reduced(*first, fitted) : first;
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
            if (!isWhole) return;
        }
    }

    void restart() {
        pass_.emplace(*bytes_);
        isBroken_ = !canvasIsReasonable(*pass_, *bytes_);
        drawn_ = 0;
        if (isBroken_) return;
        canvas_.emplace(static_cast<std::uint32_t>(pass_->gif().SWidth),
                        static_cast<std::uint32_t>(pass_->gif().SHeight));
    }

    bool drawNext() {
        const ColorMapObject* map = nullptr;
        isBroken_ = !pass_->nextFrame() || (map = colorsOf(*pass_)) == nullptr;
        if (isBroken_) return false;
        canvas_->beginFrame(pass_->frame(), pass_->control().disposal());
        RowOrder order(pass_->frame());
        for (int i = 0; i < pass_->frame().Height; ++i, order.advance()) {
            if (!pass_->readRow(row_)) {
                isBroken_ = true;
                // Part of a first frame is better than nothing.
                if (drawn_ > 0 || i == 0) return false;
                break;
            }
            canvas_->drawRow(order.row(), row_, *map, pass_->control().transparentColor());
        }
        ++drawn_;
        return true;
    }

    std::unique_ptr<ByteSource> bytes_;
    PixelSize size_;
    std::vector<GIFTiming> timings_;  // one for each frame

    std::optional<Pass> pass_;
    std::optional<Canvas> canvas_;
    std::size_t drawn_ = 0;  // the canvas shows the frame before this one
    bool isBroken_ = false;  // the pass can't go on
    std::vector<std::uint8_t> row_;
};

}  // namespace

std::unique_ptr<ImageSource> openGIF(std::unique_ptr<ByteSource> bytes) {
    auto source = std::make_unique<GIFSource>(std::move(bytes));
    return source->count() > 0 ? std::move(source) : nullptr;
}

bool gifBegins(const ByteSource& bytes) {
    Pass pass(bytes);
    if (!canvasIsReasonable(pass, bytes) || !pass.nextFrame() || colorsOf(pass) == nullptr)
        return false;
    std::vector<std::uint8_t> row;
    for (int i = 0; i < std::min(pass.frame().Height, static_cast<int>(kFirstRows)); ++i) {
        if (!pass.readRow(row)) return false;
    }
    return true;
}

}  // namespace tavrolin::adapters::images
