#include "tavrolin/service_extension/gif_image_utility.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavrolin {
namespace {

using platform::ImageSource;
using Timing = std::optional<ImageSource::GIFTiming>;

// Has frames and their timings, but no pixels.
class FakeSource : public ImageSource {
public:
    explicit FakeSource(std::vector<Timing> timings) : timings_(std::move(timings)) {}

    std::size_t count() const override { return timings_.size(); }
    std::uint32_t width() const override { return 1; }
    std::uint32_t height() const override { return 1; }
    platform::ImageRef imageAtIndex(std::size_t, std::uint32_t, std::uint32_t) override {
        ADD_FAILURE() << "a list needs no pixels";
        return nullptr;
    }
    Timing gifTimingAtIndex(std::size_t index) override { return timings_[index]; }

private:
    std::vector<Timing> timings_;
};

Timing unclamped(double seconds) {
    return ImageSource::GIFTiming{seconds, 0.1};
}

std::optional<AnimatedImage> animated(std::vector<Timing> timings) {
    return CVNGifImageUtility::animatedImageWithAnimatedGIFReleasingImageSource(
        std::make_unique<FakeSource>(std::move(timings)));
}

std::string orderOf(const AnimatedImage& animation) {
    std::string order;
    for (const std::uint32_t frame : animation.frames)
        order += std::to_string(frame);
    return order;
}

TEST(GifImageUtility, RepeatsFramesByTheirShareOfTheCommonDivisor) {
    struct Case {
        const char* what;
        std::vector<Timing> timings;
        const char* order;
        double duration;
    };
    const auto both = [](std::optional<double> exact, std::optional<double> played) {
        return Timing(ImageSource::GIFTiming{exact, played});
    };
    const Case cases[] = {
        {"0.1, 0.2, 0.1", {unclamped(0.1), unclamped(0.2), unclamped(0.1)}, "0112", 0.4},
        {"3, 6, 9", {unclamped(0.03), unclamped(0.06), unclamped(0.09)}, "011222", 0.18},
        {"no divisor", {unclamped(0.02), unclamped(0.03)}, "00111", 0.05},
        {"exactly 0: what players take", {both(0.0, 0.05), unclamped(0.1)}, "011", 0.15},
        {"nothing: what players take", {both({}, 0.05), unclamped(0.05)}, "01", 0.1},
        {"neither", {both({}, {}), unclamped(0.02)}, "011", 0.03},
        {"no GIF properties", {std::nullopt, unclamped(0.02)}, "011", 0.03},
        {"below zero", {unclamped(-0.5), unclamped(0.02)}, "011", 0.03},
        {"ties to even", {unclamped(0.025), unclamped(0.125)}, "0111111", 0.14},
        {"one frame", {unclamped(0.5)}, "0", 0.5},
    };
    for (const Case& c : cases) {
        const auto animation = animated(c.timings);
        ASSERT_TRUE(animation) << c.what;
        EXPECT_EQ(orderOf(*animation), c.order) << c.what;
        EXPECT_EQ(animation->source->count(), c.timings.size()) << c.what;
        EXPECT_DOUBLE_EQ(animation->duration, c.duration) << c.what;
    }
}

TEST(GifImageUtility, GivesNothingWithoutFrames) {
    EXPECT_FALSE(animated({}));
    EXPECT_FALSE(CVNGifImageUtility::animatedImageWithAnimatedGIFReleasingImageSource(nullptr));
    EXPECT_FALSE(CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(nullptr));
}

TEST(GifImageUtility, KeepsHostileAnimationsWithinItsBounds) {
    // Two delays of eleven minutes without a common divisor would take 131,069 entries each.
    const std::vector<Timing> slow(8, unclamped(655.35));
    const std::vector<Timing> mixed = {unclamped(655.35), unclamped(655.34), unclamped(655.35),
                                       unclamped(655.34), unclamped(655.35), unclamped(655.34),
                                       unclamped(0.01)};
    for (const auto& timings : {slow, mixed}) {
        const auto animation = animated(timings);
        ASSERT_TRUE(animation);
        EXPECT_LE(animation->frames.size(), CVNGifImageUtility::kMaximumEntries);
        EXPECT_EQ(animation->frames.front(), 0U);
        EXPECT_EQ(animation->frames.back(), timings.size() - 1);
    }

    const auto endless =
        animated({unclamped(1e30), unclamped(std::numeric_limits<double>::infinity()),
                  unclamped(std::numeric_limits<double>::quiet_NaN())});
    ASSERT_TRUE(endless);
    EXPECT_EQ(orderOf(*endless), "0");
}

}  // namespace
}  // namespace tavrolin
