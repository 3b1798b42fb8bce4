#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/content_ui/components/carousel.h"
#include "tavrolin/content_ui/components/carousel_item_view.h"
#include "tavrolin/foundation/operation_queue.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/scroll_view.h"

namespace tavrolin {

/// The payload's list of items in a row, moved step by step. A tap on an item stores its index and
/// opens the app.
///
/// Outlets: superVw (around all of it), scrollView, previousImageView, nextImageView, pageControl,
/// heightStackView (the height of what is shown), constraintScrollLeading,
/// constraintScrollTrailing, constraintStackBottom (the margins).
class ItemCarouselComponent : public CarouselComponent {
public:
    void connect(ui::Connections& connections) override;
    void configureNotification() override;
    void layoutSubviews() override;

    /// Shows another payload's items from the first one on, soon. The queue reads their pictures;
    /// without one they are read at once. The image (an asset of the library's) is shown in place
    /// of those that are missing or still to come.
    void didReceiveCarouselPayload(const Payload& payload,
                                   std::shared_ptr<foundation::OperationQueue> downloadQueue,
                                   const std::optional<std::string>& andPlaceholderImageName);
    /// "0" is the next item, "1" the previous one; anything else is passed over.
    void didReceiveCarouselButtonResponse(const foundation::Value& actionIdentifier) override;
    virtual void nextItem() = 0;
    virtual void previousItem() = 0;
    /// By the view's tag.
    void handleCarouselViewTap(ui::View& tapped);

    const RecordList<CVNCarousel>& carouselImages() const { return carouselImages_; }
    /// In the items' order; empty until they are set up.
    const std::vector<std::shared_ptr<CarouselItemView>>& pageStackViews() const {
        return pageStackViews_;
    }

protected:
    static constexpr double kSetUpDelay = 0.05;  // seconds

    /// What its start is logged as.
    virtual std::string_view startOperation() const = 0;
    /// A payload came; its pictures may be yet to come.
    virtual void didTakePayload() {}
    /// All of its pictures are there that will ever be.
    virtual void didReadPictures() {}
    /// The scroll view's width is another one, or its items are.
    virtual void placeItems() = 0;
    /// How high it is to be now.
    virtual double shownHeight() const = 0;
    /// Whether the item may be seen soon; the pictures of the others take no memory.
    virtual bool isNear(std::int64_t item) const = 0;

    std::int64_t count() const { return recordCount(carouselImages_); }
    /// Those of the payload before, until this one's are set up.
    std::int64_t itemViewCount() const { return static_cast<std::int64_t>(pageStackViews_.size()); }
    double scrollWidth() const;
    /// What raises leaves the carousel as far as it was built, and is logged.
    void guarded(const std::function<void()>& body);
    /// Calls the block on the main queue, guarded, unless the view is gone by then.
    void after(double seconds, std::function<void()> block);
    /// Empties the scroll view and fills it with a view of each item.
    void makeItems(const CarouselItemView::Style& style);
    /// In the scroll view, with its picture, and taking taps.
    std::shared_ptr<CarouselItemView> makeItem(std::int64_t item,
                                               const CarouselItemView::Style& style);
    /// An item's, as it was last laid out; 0 when there is no such item.
    double heightOf(std::int64_t item) const;
    /// The scroll view's.
    void setHeight(double height);
    void scrollTo(double x, bool animated);

    ui::View* superVw_ = nullptr;
    ui::ScrollView* scrollView_ = nullptr;
    ui::ImageView* previousImageView_ = nullptr;
    ui::ImageView* nextImageView_ = nullptr;
    ui::PageControl* pageControl_ = nullptr;
    ui::LayoutConstraint* heightStackView_ = nullptr;
    ui::LayoutConstraint* constraintScrollLeading_ = nullptr;
    ui::LayoutConstraint* constraintScrollTrailing_ = nullptr;
    ui::LayoutConstraint* constraintStackBottom_ = nullptr;

    std::shared_ptr<foundation::OperationQueue> mediaDownloadQueue_;
    std::optional<std::string> placeholderImageName_;
    RecordList<CVNCarousel> carouselImages_;
    std::vector<std::shared_ptr<CarouselItemView>> pageStackViews_;
    std::int64_t index_ = 0;  // of the item that is shown, or the left one of them

private:
    /// What was read of one payload.
    struct Pictures {
        std::vector<std::shared_ptr<ui::Image>> images;
        std::size_t awaited = 0;
        bool haveItems = false;  // to be shown in
    };

    std::weak_ptr<ItemCarouselComponent> weakly();
    void readPictures();
    void receive(const std::shared_ptr<Pictures>& pictures, std::size_t item,
                 std::shared_ptr<ui::Image> image);
    std::shared_ptr<ui::Image> pictureOf(std::int64_t item) const;

    std::shared_ptr<Pictures> pictures_;
    std::shared_ptr<ui::Image> placeholder_;
    double placedWidth_ = -1;
};

}  // namespace tavrolin
