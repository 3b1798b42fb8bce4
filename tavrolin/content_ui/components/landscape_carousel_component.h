#pragma once

#include "tavrolin/content_ui/components/item_carousel_component.h"
#include "tavrolin/content_ui/components/repeating_timer.h"

namespace tavrolin {

/// A page of full width for each item, as high as its item. On layout 72 it goes from edge to edge,
/// with the texts on the pictures, arrows and dots, and may turn its pages by itself.
class CVNLandscapeCarouselComponent : public ItemCarouselComponent {
public:
    std::string_view className() const override { return "CVNLandscapeCarouselComponent"; }
    void layoutSubviews() override;

    /// Turns the pages at the payload's speed from now on, on layout 72 with a collapsed state.
    void scheduleCarouselTimer();
    void stopCarouselTimer() override;
    void updateCarousel();
    // The arrows: a step, after which the timer's interval begins anew.
    void actionNext(ui::View& sender);
    void actionPrevious(ui::View& sender);

    // Steps wrap around, and do nothing for a single item.

    /// With the effect that the payload asks for: 2 fades, 1 scrolls, without one it jumps.
    void moveToNextItemWithTransitionEffect();
    void moveToPreviousItemWithTransitionEffect();
    void nextItem() override;
    void previousItem() override;
    void nextItemWithoutAnimation();
    void previousItemWithoutAnimation();
    void nextItemWithFadeTransition();
    void previousItemWithFadeTransition();

    // To a page that there is, at that page's height.
    void scrollToPage(std::int64_t page);
    void scrollToPageWithoutAnimation(std::int64_t page);
    void settingCurrentPageHeight(std::int64_t page);

    /// Takes up the payload's colours of each page, by the pages that each of its entries lists.
    void setCarouselOverlayProperties();
    void configureEdgeToEdgeCarouselUI();

    /// The page that is shown, or on its way.
    std::int64_t landscapeIndex() const { return index_; }

protected:
    std::string_view startOperation() const override;
    void didTakePayload() override;
    void placeItems() override;
    double shownHeight() const override;
    bool isNear(std::int64_t item) const override;

private:
    enum class Direction : std::int8_t { next, previous };
    enum class Effect : std::int8_t { none, scroll, fade };

    bool isEdgeToEdge() const;
    void setUpPages();
    void colorOverlays();
    void showArrow(ui::ImageView& arrow, std::string_view asset,
                   void (CVNLandscapeCarouselComponent::*action)(ui::View&));
    Effect effect() const;
    void move(Direction direction, Effect effect);

    std::vector<foundation::Value> overlayProperties_;  // one a page, on layout 72
    RepeatingTimer speedTimer_;
};

}  // namespace tavrolin
