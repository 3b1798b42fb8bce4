#include "tavrolin/service_extension/gif_image_utility.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavrolin {
namespace {

using platform::Image;
using platform::ImageRef;
using platform::ImageSource;
using Timing = std::optional<ImageSource::GIFTiming>;

// One pixel a frame, or as many as it is told; frames without a picture where it is told.
class FakeSource : public ImageSource {
public:
    explicit FakeSource(std::vector<Timing> timings) : timings_(std::move(timings)) {
        for (std::size_t i = 0; i < timings_.size(); ++i)
            images.push_back(std::make_shared<Image>(Image{1, 1, {}}));
    }
    std::size_t count() const override { return timings_.size(); }
    ImageRef imageAtIndex(std::size_t index) override { return images[index]; }
    Timing gifTimingAtIndex(std::size_t index) override { return timings_[index]; }
    std::uint32_t width() const override { return 1; }
    std::uint32_t height() const override { return 1; }
    ImageRef imageFitting(std::uint32_t, std::uint32_t) override { return images.front(); }

    std::vector<ImageRef> images;

private:
    std::vector<Timing> timings_;
};

Timing unclamped(double seconds) {
    return ImageSource::GIFTiming{seconds, 0.1};
}

// The list as positions of the source's frames.
std::string orderOf(const AnimatedImage& animation, const FakeSource& source) {
    std::string order;
    for (const ImageRef& image : animation.images) {
        for (std::size_t i = 0; i < source.images.size(); ++i) {
            if (source.images[i] == image) order += std::to_string(i);
        }
    }
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
        FakeSource source(c.timings);
        const auto animation = CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(source);
        ASSERT_TRUE(animation) << c.what;
        EXPECT_EQ(orderOf(*animation, source), c.order) << c.what;
        EXPECT_DOUBLE_EQ(animation->duration, c.duration) << c.what;
    }
}

TEST(GifImageUtility, PassesOverFramesThatCannotBeRead) {
    FakeSource source({unclamped(0.1), unclamped(0.3), unclamped(0.1)});
    source.images[1] = nullptr;
    const auto animation = CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(source);
    ASSERT_TRUE(animation);
    EXPECT_EQ(orderOf(*animation, source), "02");
    EXPECT_DOUBLE_EQ(animation->duration, 0.2);

    FakeSource unreadable({unclamped(0.1)});
    unreadable.images[0] = nullptr;
    EXPECT_FALSE(CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(unreadable));
    FakeSource empty({});
    EXPECT_FALSE(CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(empty));
    EXPECT_FALSE(CVNGifImageUtility::animatedImageWithAnimatedGIFReleasingImageSource(nullptr));
}

TEST(GifImageUtility, KeepsHostileAnimationsWithinItsBounds) {
    // Two delays of eleven minutes without a common divisor would take 131,069 entries each.
    FakeSource slow(std::vector<Timing>(8, unclamped(655.35)));
    FakeSource mixed({unclamped(655.35), unclamped(655.34), unclamped(655.35), unclamped(655.34),
                      unclamped(655.35), unclamped(655.34), unclamped(0.01)});
    for (FakeSource* source : {&slow, &mixed}) {
        const auto animation = CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(*source);
        ASSERT_TRUE(animation);
        EXPECT_LE(animation->images.size(), CVNGifImageUtility::kMaximumEntries);
        EXPECT_EQ(animation->images.front(), source->images.front());
        EXPECT_EQ(animation->images.back(), source->images.back());
    }

    FakeSource large(std::vector<Timing>(9, unclamped(0.1)));
    for (ImageRef& image : large.images)
        image = std::make_shared<Image>(Image{5000, 3000, {}});
    const auto first = CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(large);
    ASSERT_TRUE(first);
    EXPECT_EQ(orderOf(*first, large), "0123");

    FakeSource endless({unclamped(1e30), unclamped(std::numeric_limits<double>::infinity()),
                        unclamped(std::numeric_limits<double>::quiet_NaN())});
    const auto clamped = CVNGifImageUtility::animatedImageWithAnimatedGIFImageSource(endless);
    ASSERT_TRUE(clamped);
    EXPECT_EQ(orderOf(*clamped, endless), "0");
}

}  // namespace
}  // namespace tavrolin
