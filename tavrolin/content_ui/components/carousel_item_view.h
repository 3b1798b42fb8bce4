#pragma once

#include <cstdint>
#include <memory>

#include "tavrolin/content_ui/components/carousel_overlay.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/rich_template.h"
#include "tavrolin/ui/image.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/scroll_view.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin {

/// An item of a carousel: its picture, with title and message below it or, where it has an overlay,
/// on it. As high as that is at the item's width. Main thread.
class CarouselItemView : public ui::StackView {
public:
    struct Style {
        double emptyRatio = 1;     // height to width of what stands in for a picture
        double leastRatio = 0.25;  // what is flatter than that is shown in part
        double cornerRadius = 0;
        Margins textMargins = {};
        std::int64_t mostTitleLines = 2;
        std::int64_t mostMessageLines = 3;
        bool hasOverlay = false;
    };

    /// What is no text counts as none.
    static std::shared_ptr<CarouselItemView> make(const CVNCarousel& item, const Style& style);

    /// Puts it into the scroll view's content, at the top.
    void addTo(ui::ScrollView& scrollView);
    /// Where in the content, and how wide, in points.
    void place(double x, double width);

    /// Null: it has none, or not yet.
    void setPicture(std::shared_ptr<ui::Image> picture);
    const std::shared_ptr<ui::Image>& picture() const { return pictureView_->image(); }

    /// By the payload's entry for it. Nothing for an item whose texts lie below the picture. Raises
    /// `foundation::Exception` for a gradient that is none.
    void setOverlayColors(const foundation::Value& property);
    ui::Label& titleLabel() const { return title_.label(); }
    ui::Label& messageLabel() const { return message_.label(); }

private:
    /// A text and the label that shows as much of it as there is room for.
    class Text {
    public:
        void fill(ui::StackView& column, const foundation::Value& html,
                  const foundation::Value& plain, bool isBold);
        void limitLines(double width, std::int64_t most);
        ui::Label& label() const { return *label_; }

    private:
        ui::Label* label_ = nullptr;
        foundation::Value html_;
        foundation::Value plain_;
        bool isBold_ = false;
    };

    explicit CarouselItemView(const Style& style) : style_(style) {}
    void addPicture();
    void addTexts(const CVNCarousel& item);

    ui::ImageView* pictureView_ = nullptr;
    CarouselOverlay* overlay_ = nullptr;
    Text title_;
    Text message_;
    Style style_;
    std::shared_ptr<ui::LayoutConstraint> pictureHeight_;
    std::shared_ptr<ui::LayoutConstraint> x_;
    std::shared_ptr<ui::LayoutConstraint> width_;
};

}  // namespace tavrolin
