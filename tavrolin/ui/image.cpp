#include "tavrolin/ui/image.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "tavrolin/platform/platform.h"

namespace tavrolin::ui {

using platform::ImageRef;
using platform::ImageSource;
using platform::Size;

namespace {

constexpr double kMostPixels = 16'384;  // each way; what is more is never shown

std::uint32_t pixelCount(double length) {
    return static_cast<std::uint32_t>(
        std::clamp(std::ceil(std::isnan(length) ? 1 : length), 1.0, kMostPixels));
}

// The pixels of one frame at one size, from one source.
class Decoded {
public:
    ImageRef fitting(ImageSource& source, std::uint32_t frame, Size shown) {
        // Beyond the picture's own size there is nothing more to come.
        const Asked asked = {frame, std::min(pixelCount(shown.width), source.width()),
                             std::min(pixelCount(shown.height), source.height())};
        if (asked_ == asked) return pixels_;
        asked_ = asked;
        pixels_ = nullptr;  // before the next ones need room
        pixels_ = source.imageAtIndex(asked.frame, asked.width, asked.height);
        return pixels_;
    }

private:
    struct Asked {
        std::uint32_t frame = 0;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        bool operator==(const Asked&) const = default;
    };
    std::optional<Asked> asked_;
    ImageRef pixels_;
};

Size sizeInPoints(const ImageSource& source, double scale) {
    return {std::max(1U, source.width()) / scale, std::max(1U, source.height()) / scale};
}

class SourceImage final : public Image {
public:
    struct Frames {
        std::vector<std::uint32_t> indices;
        double duration = 0;
    };

    SourceImage(std::shared_ptr<ImageSource> source, Frames frames, std::string_view name,
                double scale)
        : Image(name), source_(std::move(source)), frames_(std::move(frames)), scale_(scale) {}

    Size size() const override { return sizeInPoints(*source_, scale_); }
    bool isAnimated() const override { return frames_.indices.size() > 1 && frames_.duration > 0; }
    ImageRef pixels(Size shownPixels, double elapsed) override {
        return decoded_.fitting(*source_, frameAt(elapsed), shownPixels);
    }
    void forgetPixels() override {
        decoded_ = Decoded();
        source_->forgetFrames();
    }

private:
    std::uint32_t frameAt(double elapsed) const {
        const auto& [indices, duration] = frames_;
        if (!(duration > 0) || !(elapsed > 0) || !std::isfinite(duration)) return indices.front();
        const auto count = static_cast<double>(indices.size());
        // A moment that falls on the edge of a frame belongs to the later one.
        const double part = std::fmod(elapsed, duration) / duration;
        const double position = std::clamp(std::floor(part * count + 1e-6), 0.0, count);
        return indices[static_cast<std::size_t>(position) % indices.size()];
    }

    std::shared_ptr<ImageSource> source_;
    Frames frames_;
    double scale_;
    Decoded decoded_;
};

// An asset: the same picture in files of several sizes, smallest first.
class AssetImage final : public Image {
public:
    struct File {
        double scale = 1;
        std::string path;
        std::unique_ptr<ImageSource> source;
        bool wasOpened = false;
    };

    AssetImage(std::vector<File> files, std::string_view name, Size size)
        : Image(name), files_(std::move(files)), size_(size) {}

    Size size() const override { return size_; }
    ImageRef pixels(Size shownPixels, double) override {
        const double scale =
            std::max(shownPixels.width / size_.width, shownPixels.height / size_.height);
        for (std::size_t i = 0; i < files_.size(); ++i) {
            const bool isLast = i + 1 == files_.size();
            if (!isLast && files_[i].scale < scale) continue;
            ImageSource* source = opened(files_[i]);
            if (source == nullptr) continue;
            if (std::exchange(from_, i) != i) decoded_ = Decoded();
            return decoded_.fitting(*source, 0, shownPixels);
        }
        return nullptr;
    }
    void forgetPixels() override { decoded_ = Decoded(); }

    static ImageSource* opened(File& file) {
        if (!std::exchange(file.wasOpened, true)) {
            file.source = platform::current().imageDecoder->sourceWithFile(file.path);
        }
        return file.source.get();
    }

private:
    std::vector<File> files_;
    Size size_;
    std::size_t from_ = 0;
    Decoded decoded_;
};

}  // namespace

std::shared_ptr<Image> Image::withSource(std::unique_ptr<ImageSource> source, std::string_view name,
                                         double scale) {
    if (source == nullptr) return nullptr;
    return std::make_shared<SourceImage>(std::move(source), SourceImage::Frames{{0}, 0}, name,
                                         scale > 0 ? scale : 1);
}

std::shared_ptr<Image> Image::named(std::string_view name, const platform::Bundle& bundle,
                                    double displayScale) {
    std::vector<AssetImage::File> files;
    for (const int scale : {1, 2, 3}) {
        std::string file(name);
        if (scale > 1) file += "@" + std::to_string(scale) + "x";
        if (auto path = bundle.pathForResource(file, "png")) {
            files.push_back({static_cast<double>(scale), std::move(*path), nullptr, false});
        }
    }
    if (files.empty()) return nullptr;
    const auto isEnough = [&](const auto& file) { return file.scale >= displayScale; };
    auto chosen = std::ranges::find_if(files, isEnough);
    if (chosen == files.end()) --chosen;
    const ImageSource* source = AssetImage::opened(*chosen);
    if (source == nullptr) return nullptr;
    const Size size = sizeInPoints(*source, chosen->scale);
    return std::make_shared<AssetImage>(std::move(files), name, size);
}

std::shared_ptr<Image> Image::animated(std::shared_ptr<ImageSource> source,
                                       std::vector<std::uint32_t> frames, double duration,
                                       std::string_view name) {
    if (source == nullptr || frames.empty()) return nullptr;
    return std::make_shared<SourceImage>(std::move(source),
                                         SourceImage::Frames{std::move(frames), duration}, name, 1);
}

}  // namespace tavrolin::ui
