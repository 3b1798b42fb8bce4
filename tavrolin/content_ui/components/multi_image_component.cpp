#include "tavrolin/content_ui/components/multi_image_component.h"

#include <algorithm>
#include <string>

#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

using foundation::Value;

namespace {

constexpr std::int64_t kLeft = 1;
constexpr std::int64_t kMiddle = 2;
constexpr std::int64_t kRight = 3;
constexpr double kMargin = 16;

// Null when it can't be read.
std::shared_ptr<ui::Image> pictureOf(const CVNCarousel& item) {
    const std::string_view path = foundation::stringOrEmpty(item.imgUrlPath);
    if (!path.starts_with('/')) return nullptr;
    return CVNBaseComponentView::getImageFromURL(foundation::URL::fileURLWithPath(path));
}

}  // namespace

void CVNMultiImageComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("horizontalImageStack", horizontalImageStack_);
    for (std::size_t i = 0; i < imageSlots_.size(); ++i)
        connections.view("imageSlot" + std::to_string(i), imageSlots_[i]);
    connections.view("halfSlot", halfSlot_);
    connections.constraint("imageStackLeading", imageStackLeading_);
    connections.constraint("imageStackTrailing", imageStackTrailing_);
    connections.constraint("imageStackAlignCenterX", imageStackAlignCenterX_);
    connections.constraint("imageSlotWidth", imageSlotWidth_);
    connections.action("imageTapped:", [this](ui::View& slot) { imageTapped(slot); });
}

void CVNMultiImageComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    showPictures();
    updateMultiImageAlignmentForPosition(getPositionOfMultiImageFromPayload());
}

// A picture that can't be read leaves a quiet box.
void CVNMultiImageComponent::showPictures() {
    const auto& items = cvnPayload().carousel;
    for (std::int64_t i = 0; i < kSlots; ++i) {
        ui::ImageView& slot = *imageSlots_[static_cast<std::size_t>(i)];
        const auto item = i < filledCount() ? recordAtIndex(items, i) : nullptr;
        slot.setImage(item ? pictureOf(*item) : nullptr);
        slot.setBackgroundColor(item ? std::optional(ui::palette::fill) : std::nullopt);
    }
}

std::int64_t CVNMultiImageComponent::filledCount() const {
    return std::min(recordCount(cvnPayload().carousel), kSlots);
}

std::int64_t CVNMultiImageComponent::getPositionOfMultiImageFromPayload() const {
    const auto found = [](std::string_view message, std::int64_t position) {
        log(LogLevel::info, "-[CVNMultiImageComponent getPositionOfMultiImageFromPayload]",
            formatMessage(message, {position}));
        return position;
    };
    const Value& settings = cvnUi().cvnLui;
    if (!settings.isDictionary()) {
        return found("MultiImage: No cvnLui found in payload, using default position: %ld",
                     kMiddle);
    }
    const Value& position = settings[kPNMultiImagePosition];
    if (!position)
        return found("MultiImage: No position found in payload, using default: %ld", kMiddle);
    return found("MultiImage: Position found in payload: %ld", foundation::integerOrZero(position));
}

void CVNMultiImageComponent::updateMultiImageAlignmentForPosition(std::int64_t position) {
    imageStackLeading_->setConstant(kMargin);
    imageStackTrailing_->setConstant(kMargin);
    imageStackLeading_->setActive(position != kRight);
    imageStackTrailing_->setActive(position != kLeft);
    imageStackAlignCenterX_->setActive(position != kLeft && position != kRight);
    arrangeSlots(position);
}

// The slots without an item go to the side that the pictures don't stand at. In the middle half of
// them go to either side; of an odd number one is cut in two: the half slot and the last slot.
void CVNMultiImageComponent::arrangeSlots(std::int64_t position) {
    const std::int64_t filled = filledCount();
    const std::int64_t empty = kSlots - filled;
    const bool isInTheMiddle = position != kLeft && position != kRight;
    const std::int64_t before = isInTheMiddle ? empty / 2 : position == kRight ? empty : 0;
    halfSlot_->setHidden(!isInTheMiddle || empty % 2 == 0);
    auto slots = imageSlots_;
    std::rotate(slots.begin(), slots.begin() + filled, slots.begin() + filled + before);
    for (ui::ImageView* slot : slots)
        horizontalImageStack_->addArrangedSubview(slot->shared_from_this());
    // What the five slots leave of the stack's width.
    horizontalImageStack_->setMargins({.leading = isInTheMiddle        ? kMargin
                                                  : position == kRight ? 2 * kMargin
                                                                       : 0,
                                       .trailing = isInTheMiddle       ? kMargin
                                                   : position == kLeft ? 2 * kMargin
                                                                       : 0});
}

void CVNMultiImageComponent::layoutSubviews() {
    if (imageSlotWidth_ != nullptr) imageSlotWidth_->setConstant(imageItemWidthForStackView());
}

double CVNMultiImageComponent::imageItemWidthForStackView() {
    if (!(horizontalImageStack_->bounds().width > 0)) layoutIfNeeded();
    const double gaps = (kSlots - 1) * horizontalImageStack_->spacing();
    return std::max(0.0, (horizontalImageStack_->bounds().width - 2 * kMargin - gaps) / kSlots);
}

void CVNMultiImageComponent::imageTapped(ui::View& slot) {
    if (slot.tag() >= recordCount(cvnPayload().carousel)) return;
    CVNPushPreferencesManager::setCarouselIndex(slot.tag());
    tapNotificationEvent(slot);
}

}  // namespace tavrolin
