#pragma once

#include <array>

#include "tavrolin/content_ui/components/item_carousel_component.h"

namespace tavrolin {

/// Two items side by side, moved by one item at a time; after the last one comes the first again.
/// As high as the higher one of the two. Outlet: constraintScrollTop, the margin below what may
/// stand above it.
class CVNPortraitCarouselComponent : public ItemCarouselComponent {
public:
    std::string_view className() const override { return "CVNPortraitCarouselComponent"; }
    void connect(ui::Connections& connections) override;

    /// Builds the items anew. A copy of the first one follows the last.
    void setupScroll();
    /// Both do nothing unless there are more than two items.
    void nextItem() override;
    void previousItem() override;
    /// The item and the one after it. Raises `foundation::Exception` when there are none.
    std::array<std::int64_t, 2> indexesForWindowAtIndex(std::int64_t index) const;
    void updateVisibleItemsHeight();

    /// The left item; the count of them while the first one's copy is at the left.
    std::int64_t potraitIndex() const { return index_; }

protected:
    std::string_view startOperation() const override;
    void didTakePayload() override;
    void didReadPictures() override;
    void placeItems() override;
    double shownHeight() const override;
    bool isNear(std::int64_t item) const override;

private:
    double itemWidth() const;
    double step() const;
    void scrollToIndex(bool animated);
    void endWrap();

    ui::LayoutConstraint* constraintScrollTop_ = nullptr;
    std::shared_ptr<CarouselItemView> copyOfFirst_;  // null for a single item
};

}  // namespace tavrolin
