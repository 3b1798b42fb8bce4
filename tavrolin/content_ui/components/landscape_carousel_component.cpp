#include "tavrolin/content_ui/components/landscape_carousel_component.h"

#include <optional>

#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/components/carousel_overlay.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/animation.h"
#include "tavrolin/ui/gesture_recognizer.h"

namespace tavrolin {

using foundation::Value;
using platform::Color;

namespace {

constexpr std::string_view kOverlayOperation =
    "-[CVNLandscapeCarouselComponent setCarouselOverlayProperties]";
constexpr std::string_view kOverlayMessage = "Invalid argument while fetching carousel index  %@";
constexpr std::int64_t kEdgeToEdgeLayout = 72;
constexpr CarouselItemView::Style kBelowPicture{
    .emptyRatio = 0.5, .textMargins = {.top = 12, .leading = 16, .bottom = 16, .trailing = 16}};
// The dots lie below the texts, and the arrows above them.
constexpr CarouselItemView::Style kOnPicture{
    .emptyRatio = 0.5,
    .leastRatio = 0.5,
    .textMargins = {.top = 12, .leading = 16, .bottom = 32, .trailing = 16},
    .mostTitleLines = 1,
    .mostMessageLines = 2,
    .hasOverlay = true};

// Nil where the settings are none.
Value setting(const Value& settings, std::string_view key) {
    return settings.isDictionary() ? settings[key] : Value();
}

}  // namespace

std::string_view CVNLandscapeCarouselComponent::startOperation() const {
    return "-[CVNLandscapeCarouselComponent configureNotification]";
}

bool CVNLandscapeCarouselComponent::isEdgeToEdge() const {
    return foundation::integerOrZero(cvnUi().layoutId) == kEdgeToEdgeLayout;
}

// --- Its pages

void CVNLandscapeCarouselComponent::didTakePayload() {
    stopCarouselTimer();
    setCarouselOverlayProperties();
    configureEdgeToEdgeCarouselUI();
    after(kSetUpDelay, [this] { setUpPages(); });
}

void CVNLandscapeCarouselComponent::setUpPages() {
    scrollView_->setPagingEnabled(true);
    makeItems(isEdgeToEdge() ? kOnPicture : kBelowPicture);
    colorOverlays();
    setNeedsLayout();
    layoutIfNeeded();
    scheduleCarouselTimer();
}

void CVNLandscapeCarouselComponent::colorOverlays() {
    for (const auto& page : pageStackViews_) {
        const auto index = static_cast<std::size_t>(page->tag());
        if (index >= overlayProperties_.size()) return;
        guard(kOverlayOperation, kOverlayMessage,
              [&] { page->setOverlayColors(overlayProperties_[index]); });
    }
}

void CVNLandscapeCarouselComponent::placeItems() {
    const double width = scrollWidth();
    double x = 0;
    for (const auto& page : pageStackViews_) {
        page->place(x, width);
        x += width;
    }
    scrollView_->setContentSize({x, 0});
    scrollTo(static_cast<double>(index_) * width, false);
}

void CVNLandscapeCarouselComponent::setCarouselOverlayProperties() {
    overlayProperties_.clear();
    if (!isEdgeToEdge()) return;
    guard(kOverlayOperation, kOverlayMessage, [this] {
        readOverlayProperties(cvnUi().cvnLui[kPNE2ECarouselCarouselOverlayColor], count(),
                              overlayProperties_);
    });
}

void CVNLandscapeCarouselComponent::configureEdgeToEdgeCarouselUI() {
    static constexpr double kDotsRadius = 7;
    static constexpr double kOtherDots = 0.35;  // opacity
    if (!isEdgeToEdge()) return;
    showArrow(*previousImageView_, "cvn-pn-carousel-previous",
              &CVNLandscapeCarouselComponent::actionPrevious);
    showArrow(*nextImageView_, "cvn-pn-carousel-next", &CVNLandscapeCarouselComponent::actionNext);

    const bool isDark = CVNSharedUtility::getIsDarkMode();
    const Color current = isDark ? Color::white() : Color::black();
    Color other = current;
    other.alpha = kOtherDots;
    pageControl_->setHidden(false);
    pageControl_->setBackgroundColor(CVNColorUtility::colorFromHexString(
        isDark ? kPNGradientBlackColorValue : kPNGradientWhiteColorValue));
    pageControl_->setCornerRadius(kDotsRadius);
    pageControl_->setNumberOfPages(count());
    pageControl_->setCurrentPage(0);
    pageControl_->setCurrentPageIndicatorTintColor(current);
    pageControl_->setPageIndicatorTintColor(other);
}

void CVNLandscapeCarouselComponent::showArrow(
    ui::ImageView& arrow, std::string_view asset,
    void (CVNLandscapeCarouselComponent::*action)(ui::View&)) {
    arrow.setHidden(false);
    arrow.setImage(ui::Image::named(asset, platform::current().bundles->library(),
                                    traitCollection().displayScale));
    if (!arrow.gestureRecognizers().empty()) return;  // from another payload
    arrow.setUserInteractionEnabled(true);
    arrow.addGestureRecognizer(std::make_shared<ui::TapGestureRecognizer>(
        [this, action](ui::View& tapped) { (this->*action)(tapped); }));
}

void CVNLandscapeCarouselComponent::layoutSubviews() {
    ItemCarouselComponent::layoutSubviews();
    for (ui::ImageView* const arrow : {previousImageView_, nextImageView_}) {
        arrow->setCornerRadius(arrow->bounds().height / 2);
        arrow->setClipsToBounds(true);
    }
}

// --- Turning by itself

void CVNLandscapeCarouselComponent::scheduleCarouselTimer() {
    stopCarouselTimer();
    if (!isEdgeToEdge() || !cvnUi().cvnCs) return;
    const std::int64_t seconds =
        foundation::integerOrZero(setting(cvnUi().cvnLui, kPNE2ECarouselSpeed));
    if (seconds > 0) speedTimer_.start(static_cast<double>(seconds), [this] { updateCarousel(); });
}

void CVNLandscapeCarouselComponent::stopCarouselTimer() {
    speedTimer_.stop();
}

void CVNLandscapeCarouselComponent::updateCarousel() {
    moveToNextItemWithTransitionEffect();
}

void CVNLandscapeCarouselComponent::actionNext(ui::View& /*sender*/) {
    moveToNextItemWithTransitionEffect();
    scheduleCarouselTimer();
}

void CVNLandscapeCarouselComponent::actionPrevious(ui::View& /*sender*/) {
    moveToPreviousItemWithTransitionEffect();
    scheduleCarouselTimer();
}

// --- Steps

CVNLandscapeCarouselComponent::Effect CVNLandscapeCarouselComponent::effect() const {
    switch (foundation::integerOrZero(setting(cvnUi().cvnCs, kPNE2ECarouselTransitionEffect))) {
        case 1:
            return Effect::scroll;
        case 2:
            return Effect::fade;
        default:
            return Effect::none;
    }
}

void CVNLandscapeCarouselComponent::moveToNextItemWithTransitionEffect() {
    move(Direction::next, effect());
    pageControl_->setCurrentPage(index_);
}

void CVNLandscapeCarouselComponent::moveToPreviousItemWithTransitionEffect() {
    move(Direction::previous, effect());
    pageControl_->setCurrentPage(index_);
}

void CVNLandscapeCarouselComponent::nextItem() {
    move(Direction::next, Effect::scroll);
}

void CVNLandscapeCarouselComponent::previousItem() {
    move(Direction::previous, Effect::scroll);
}

void CVNLandscapeCarouselComponent::nextItemWithoutAnimation() {
    move(Direction::next, Effect::none);
}

void CVNLandscapeCarouselComponent::previousItemWithoutAnimation() {
    move(Direction::previous, Effect::none);
}

void CVNLandscapeCarouselComponent::nextItemWithFadeTransition() {
    move(Direction::next, Effect::fade);
}

void CVNLandscapeCarouselComponent::previousItemWithFadeTransition() {
    move(Direction::previous, Effect::fade);
}

void CVNLandscapeCarouselComponent::move(Direction direction, Effect effect) {
    if (count() <= kCarouselLandscapeNotificationMinimumCount) return;
    if (direction == Direction::next) {
        index_ = index_ + 1 >= count() ? 0 : index_ + 1;
    } else {
        index_ = index_ < 1 ? count() - 1 : index_ - 1;
    }
    switch (effect) {
        case Effect::none:
            return scrollToPageWithoutAnimation(index_);
        case Effect::scroll:
            return scrollToPage(index_);
        case Effect::fade:
            ui::crossFade(*scrollView_, ui::kAnimationDuration,
                          [this] { scrollToPageWithoutAnimation(index_); });
    }
}

void CVNLandscapeCarouselComponent::scrollToPage(std::int64_t page) {
    settingCurrentPageHeight(page);
    scrollTo(static_cast<double>(page) * scrollWidth(), true);
}

void CVNLandscapeCarouselComponent::scrollToPageWithoutAnimation(std::int64_t page) {
    settingCurrentPageHeight(page);
    scrollTo(static_cast<double>(page) * scrollWidth(), false);
}

void CVNLandscapeCarouselComponent::settingCurrentPageHeight(std::int64_t page) {
    layoutIfNeeded();
    setHeight(heightOf(page));
}

// --- What is seen

double CVNLandscapeCarouselComponent::shownHeight() const {
    return heightOf(index_);
}

bool CVNLandscapeCarouselComponent::isNear(std::int64_t item) const {
    const std::int64_t items = itemViewCount();
    const std::int64_t ahead = (item - index_ % items + items) % items;
    return ahead <= 1 || ahead == items - 1;
}

}  // namespace tavrolin
