#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin {

/// Frames of `source` that are shown one after the other, by their index, each for the same share
/// of `duration` (in seconds). A frame that stays longer stands in the list more than once. Whoever
/// shows one decodes it then: the list holds no pixels.
struct AnimatedImage {
    std::shared_ptr<platform::ImageSource> source;
    std::vector<std::uint32_t> frames;
    double duration = 0;
};

/// Makes animated images of GIFs; of a still picture it makes one of a single entry. Nothing comes
/// back when there is no frame. Threads: any.
///
/// A list that would have more than `kMaximumEntries` entries gets as many as fit, with the frames'
/// shares kept roughly; frames are taken in order as long as their delays can be summed up.
class CVNGifImageUtility {
public:
    static constexpr std::size_t kMaximumEntries = 1U << 18U;

    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFData(
        foundation::Value::Bytes data);
    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFURL(const foundation::URL& url);

    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFImageSource(
        std::shared_ptr<platform::ImageSource> source);
    /// The same for a source that is handed over.
    static std::optional<AnimatedImage> animatedImageWithAnimatedGIFReleasingImageSource(
        std::unique_ptr<platform::ImageSource> source);

    /// Each frame as often as the greatest common divisor of all delays goes into its own delay.
    /// Delays are in hundredths of a second and positive, one for each frame from the first on;
    /// `total` is their sum.
    static std::vector<std::uint32_t> frameArray(const std::vector<std::int32_t>& delays,
                                                 std::int32_t total);
};

}  // namespace tavrolin
