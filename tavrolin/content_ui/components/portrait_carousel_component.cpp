#include "tavrolin/content_ui/components/portrait_carousel_component.h"

#include <algorithm>

#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/ui/animated_value.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

namespace {

constexpr double kSpace = kCarouselNotificationCellSpace;

}  // namespace

std::string_view CVNPortraitCarouselComponent::startOperation() const {
    return "-[CVNPortraitCarouselComponent configureNotification]";
}

void CVNPortraitCarouselComponent::connect(ui::Connections& connections) {
    ItemCarouselComponent::connect(connections);
    connections.constraint("constraintScrollTop", constraintScrollTop_);
}

// --- Its items

void CVNPortraitCarouselComponent::didTakePayload() {
    static constexpr double kMargin = 16;
    // Above it are the texts, with a margin of their own, where the payload has a timer.
    constraintScrollTop_->setConstant(cvnUi().cvnTim ? 0 : kMargin);
}

void CVNPortraitCarouselComponent::didReadPictures() {
    after(kSetUpDelay, [this] { setupScroll(); });
}

void CVNPortraitCarouselComponent::setupScroll() {
    static constexpr CarouselItemView::Style kStyle{
        .emptyRatio = 1, .cornerRadius = 8, .textMargins = {.top = 8}};
    scrollView_->setPagingEnabled(false);
    makeItems(kStyle);
    copyOfFirst_ = count() > 1 ? makeItem(0, kStyle) : nullptr;
    setNeedsLayout();
    updateVisibleItemsHeight();
}

double CVNPortraitCarouselComponent::itemWidth() const {
    return std::max(0.0, (scrollWidth() - kSpace) / 2);
}

double CVNPortraitCarouselComponent::step() const {
    return (scrollWidth() - kSpace) * 0.5 + kSpace;
}

void CVNPortraitCarouselComponent::placeItems() {
    double x = 0;
    for (const auto& item : pageStackViews_) {
        item->place(x, itemWidth());
        x += step();
    }
    if (copyOfFirst_) copyOfFirst_->place(x, itemWidth());
    scrollView_->setContentSize({x + (copyOfFirst_ ? itemWidth() : -kSpace), 0});
    scrollToIndex(false);
}

// Steps beyond the copy, while it is on its way, stay there.
void CVNPortraitCarouselComponent::scrollToIndex(bool animated) {
    scrollTo(static_cast<double>(std::min(index_, count())) * step(), animated);
}

// --- Steps

void CVNPortraitCarouselComponent::nextItem() {
    if (count() <= kCarouselPortraitNotificationMinimumCount) return;
    ++index_;
    scrollToIndex(true);
    updateVisibleItemsHeight();
    if (index_ == count()) after(ui::kAnimationDuration, [this] { endWrap(); });
}

// From the first item's copy to the first item, which looks the same.
void CVNPortraitCarouselComponent::endWrap() {
    index_ = 0;
    scrollTo(0, false);
    updateVisibleItemsHeight();
}

void CVNPortraitCarouselComponent::previousItem() {
    if (count() <= kCarouselPortraitNotificationMinimumCount) return;
    --index_;
    if (index_ < 0) {
        index_ = count() - 1;
        scrollTo(static_cast<double>(count()) * step(), false);
    }
    scrollToIndex(true);
    updateVisibleItemsHeight();
}

// --- What is seen

std::array<std::int64_t, 2> CVNPortraitCarouselComponent::indexesForWindowAtIndex(
    std::int64_t index) const {
    if (count() == 0) {
        foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                     "a carousel without items has no window");
    }
    return {index, (index + 1) % count()};
}

void CVNPortraitCarouselComponent::updateVisibleItemsHeight() {
    if (pageStackViews_.empty()) return;
    layoutIfNeeded();
    setHeight(shownHeight());
    layoutIfNeeded();
}

double CVNPortraitCarouselComponent::shownHeight() const {
    return std::max(heightOf(index_ % itemViewCount()), heightOf((index_ + 1) % itemViewCount()));
}

bool CVNPortraitCarouselComponent::isNear(std::int64_t item) const {
    const std::int64_t items = itemViewCount();
    const std::int64_t ahead = (item - index_ % items + items) % items;
    return ahead <= 2 || ahead == items - 1;
}

}  // namespace tavrolin
