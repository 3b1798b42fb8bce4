#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin {

/// Pictures that are shown one after the other, each for the same share of `duration` (in seconds).
/// A picture that stays longer stands in the list more than once; the entries share its pixels.
struct AnimatedImage {
    std::vector<platform::ImageRef> images;
    double duration = 0;
};

/// Makes animated images of GIFs; of a still picture it makes one of a single entry. Nothing comes
/// back when not one frame can be read. Threads: any.
///
/// Two bounds hold against files that would fill the memory: frames are taken in order as long as
/// they have at most `kMaximumPixels` together (the first one always), and a list that would have
/// more than `kMaximumEntries` entries gets as many as fit, with the frames' shares kept roughly.
class CVNGifImageUtility {
public:
    static constexpr std::uint64_t kMaximumPixels = 64'000'000;
    static constexpr std::size_t kMaximumEntries = 1U << 18U;

    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFData(
        foundation::Value::Bytes data);
    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFURL(const foundation::URL& url);

    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFImageSource(
        platform::ImageSource& source);
    /// The same, and the source is gone afterwards; a null one gives nothing.
    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFReleasingImageSource(
        std::unique_ptr<platform::ImageSource> source);

    /// Each image as often as the greatest common divisor of all delays goes into its own delay.
    /// Delays are in hundredths of a second and positive, one for each image; `total` is their sum.
    static std::vector<platform::ImageRef> frameArray(const std::vector<platform::ImageRef>& images,
                                                      const std::vector<std::int32_t>& delays,
                                                      std::int32_t total);
};

}  // namespace tavrolin
