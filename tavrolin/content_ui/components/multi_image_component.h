#pragma once

#include <array>
#include <cstdint>

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin {

/// The first five pictures of the carousel in a row of five square slots. The slots with pictures
/// stand together at the left, in the middle or at the right; the others are clear beside them.
///
/// Outlets: horizontalImageStack, imageSlot0 to imageSlot4 (with their numbers as tags), halfSlot
/// (hidden), imageStackLeading, imageStackTrailing, imageStackAlignCenterX, imageSlotWidth.
/// Operation for interface files: imageTapped:.
class CVNMultiImageComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNMultiImageComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;
    void layoutSubviews() override;

    /// Where the payload wants the pictures: 1 left, 3 right, any other number in the middle.
    std::int64_t getPositionOfMultiImageFromPayload() const;
    void updateMultiImageAlignmentForPosition(std::int64_t position);
    /// Of one slot, in points.
    double imageItemWidthForStackView();
    /// Remembers the picture and asks for the app to be opened; nothing for a slot without an item.
    void imageTapped(ui::View& slot);

private:
    static constexpr std::int64_t kSlots = 5;

    void showPictures();
    void arrangeSlots(std::int64_t position);
    std::int64_t filledCount() const;

    ui::StackView* horizontalImageStack_ = nullptr;
    std::array<ui::ImageView*, kSlots> imageSlots_{};
    ui::View* halfSlot_ = nullptr;
    ui::LayoutConstraint* imageStackLeading_ = nullptr;
    ui::LayoutConstraint* imageStackTrailing_ = nullptr;
    ui::LayoutConstraint* imageStackAlignCenterX_ = nullptr;
    ui::LayoutConstraint* imageSlotWidth_ = nullptr;
};

}  // namespace tavrolin
