#include "tavrolin/service_extension/gif_image_utility.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "tavrolin/platform/platform.h"

namespace tavrolin {

using platform::ImageSource;

namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

// In hundredths of a second, at least 1.
std::int32_t delayOf(const std::optional<ImageSource::GIFTiming>& timing) {
    if (!timing) return 1;
    double seconds = timing->unclampedDelayTime.value_or(0);
    if (seconds == 0) seconds = timing->delayTime.value_or(0);
    if (!(seconds > 0)) return 1;
    // Ties to even, as the rounding mode is. Less than half a hundredth would be no delay at all.
    const double hundredths = std::nearbyint(seconds * 100);
    return static_cast<std::int32_t>(std::clamp(hundredths, 1.0, static_cast<double>(kLargest)));
}

}  // namespace

std::optional<AnimatedImage> CVNGifImageUtility::animatedImageWithAnimatedGIFData(
    foundation::Value::Bytes data) {
    return animatedImageWithAnimatedGIFReleasingImageSource(
        platform::current().imageDecoder->sourceWithData(data));
}

std::optional<AnimatedImage> CVNGifImageUtility::animatedImageWithAnimatedGIFURL(
    const foundation::URL& url) {
    if (!url.isFileURL()) return std::nullopt;
    return animatedImageWithAnimatedGIFReleasingImageSource(
        platform::current().imageDecoder->sourceWithFile(url.path()));
}

std::optional<AnimatedImage> CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(
    std::shared_ptr<ImageSource> source) {
    if (!source) return std::nullopt;
    std::vector<std::int32_t> delays;
    std::int32_t total = 0;
    for (std::size_t i = 0; i < source->count(); ++i) {
        const std::int32_t delay = delayOf(source->gifTimingAtIndex(i));
        if (delay > kLargest - total) break;
        total += delay;
        delays.push_back(delay);
    }
    if (delays.empty()) return std::nullopt;
    return AnimatedImage{std::move(source), frameArray(delays, total), total / 100.0};
}

std::optional<AnimatedImage> CVNGifImageUtility::animatedImageWithAnimatedGIFReleasingImageSource(
    std::unique_ptr<ImageSource> source) {
    return animatedImageWithAnimatedGIFImageSource(std::move(source));
}

std::vector<std::uint32_t> CVNGifImageUtility::frameArray(const std::vector<std::int32_t>& delays,
                                                          std::int32_t total) {
    std::vector<std::uint32_t> frames;
    if (delays.empty()) return frames;
    std::int32_t step = std::accumulate(delays.begin(), delays.end(), delays.front(),
                                        std::gcd<std::int32_t, std::int32_t>);
    const auto most = static_cast<std::int32_t>(kMaximumEntries);
    if (total / step > most) step = total / most + 1;
    frames.reserve(static_cast<std::size_t>(total / step) + delays.size());
    for (std::size_t i = 0; i < delays.size(); ++i) {
        frames.insert(frames.end(), static_cast<std::size_t>(std::max(delays[i] / step, 1)),
                      static_cast<std::uint32_t>(i));
    }
    return frames;
}

}  // namespace tavrolin
