#include "tavrolin/ui/controls.h"

#include <algorithm>
#include <cmath>

#include "tavrolin/ui/content_fit.h"
#include "tavrolin/ui/drawing.h"
#include "tavrolin/ui/property_values.h"
#include "tavrolin/ui/value_text.h"

namespace tavrolin::ui {

using platform::Canvas;
using platform::Color;
using platform::Point;
using platform::Rect;
using platform::Size;

namespace {

constexpr double kImageGap = 8;  // between a button's picture and its title
constexpr double kDisabledAlpha = 0.4;
constexpr double kTrackHeight = 4;
constexpr double kThumb = 26;
constexpr double kSliderHeight = 32;
constexpr double kDot = 8;
constexpr double kDotStep = 16;  // from one dot to the next
constexpr double kPageControlHeight = 26;

double part(double value) {
    return value > 0 ? std::min(value, 1.0) : 0;  // not a number: 0
}

}  // namespace

// --- Control

bool Control::takeTap(Point) {
    if (!isEnabled_) return false;
    sendAction();
    return true;
}

void Control::setEnabled(bool enabled) {
    isEnabled_ = enabled;
    setNeedsDisplay();
}

void Control::sendAction() {
    const Action action = action_;  // which may set another one
    if (action) action(*this);
}

bool Control::setProperty(std::string_view name, const foundation::Value& value) {
    if (name == "action") {
        actionName_ = property::text(value);
    } else if (name == "enabled") {
        setEnabled(property::boolean(value));
    } else {
        return View::setProperty(name, value);
    }
    return true;
}

// --- Button

Button::Button() {
    title_.setTextColor(palette::tint);
    title_.setTextAlignment(platform::TextAlignment::center);
}

void Button::contentChanged() {
    invalidateIntrinsicContentSize();
    setNeedsDisplay();
}

void Button::setTitle(std::string_view title) {
    if (title == title_.text()) return;
    title_.setText(title);
    contentChanged();
}

void Button::setTitleColor(const DynamicColor& color) {
    title_.setTextColor(color);
    setNeedsDisplay();
}

void Button::setTitleFont(const platform::Font& font) {
    title_.setFont(font);
    contentChanged();
}

void Button::setImage(std::shared_ptr<Image> image) {
    if (image == image_) return;
    image_ = std::move(image);
    contentChanged();
}

void Button::setTintColor(std::optional<DynamicColor> color) {
    tintColor_ = color;
    setNeedsDisplay();
}

void Button::setContentInsets(const Insets& insets) {
    insets_ = insets;
    contentChanged();
}

Size Button::intrinsicContentSize(double) const {
    const Size picture = image_ == nullptr ? Size() : image_->size();
    Size size = picture;
    if (!title().empty() || image_ == nullptr) {
        const Size text = title_.intrinsicContentSize(platform::kUnlimitedWidth);
        size.width += text.width + (image_ == nullptr ? 0 : kImageGap);
        size.height = std::max(size.height, text.height);
    }
    return {std::max(0.0, size.width + insets_.leading + insets_.trailing),
            std::max(0.0, size.height + insets_.top + insets_.bottom)};
}

Button::Arrangement Button::arranged() const {
    const bool isReversed = effectiveLayoutDirection() == LayoutDirection::rightToLeft;
    const double left = isReversed ? insets_.trailing : insets_.leading;
    const double right = isReversed ? insets_.leading : insets_.trailing;
    const Rect room{left, insets_.top, std::max(0.0, bounds().width - left - right),
                    std::max(0.0, bounds().height - insets_.top - insets_.bottom)};
    if (image_ == nullptr) return {{}, room};
    const Size natural = image_->size();
    const bool isTooLarge = natural.width > room.width || natural.height > room.height;
    Rect place =
        placeOf(natural, room, isTooLarge ? ContentMode::scaleAspectFit : ContentMode::center);
    if (title().empty()) return {place, room};
    const double text = std::min(title_.intrinsicContentSize(platform::kUnlimitedWidth).width,
                                 std::max(0.0, room.width - place.width - kImageGap));
    const double all = place.width + kImageGap + text;
    const double start = room.x + (room.width - all) / 2;
    place.x = isReversed ? start + all - place.width : start;
    return {place,
            {isReversed ? start : start + place.width + kImageGap, room.y, text, room.height}};
}

Rect Button::contentExtent() const {
    const Arrangement arrangement = arranged();
    return arrangement.image.united(title_.textExtent(arrangement.title));
}

void Button::drawContent(Canvas& canvas) const {
    const auto [place, room] = arranged();
    if (!isEnabled()) canvas.beginGroup();
    if (image_ != nullptr) {
        std::optional<Color> tint;
        if (tintColor_) tint = resolved(*tintColor_);
        drawPicture(canvas, image_, 0, place, tint);
    }
    title_.drawText(canvas, room, resolved(title_.textColor()));
    if (!isEnabled()) canvas.endGroup(kDisabledAlpha);
}

bool Button::setProperty(std::string_view name, const foundation::Value& value) {
    using namespace property;
    platform::Font font = title_.font();
    if (name == "title") {
        setTitle(text(value));
    } else if (name == "image") {
        setImage(asset(value));
    } else if (name == "titleColor") {
        setTitleColor(color(value));
    } else if (name == "fontSize") {
        font.size = length(value);
        setTitleFont(font);
    } else if (name == "bold") {
        font.bold = boolean(value);
        setTitleFont(font);
    } else if (name == "tintColor") {
        setTintColor(optionalColor(value));
    } else if (name == "insets") {
        setContentInsets(edges<Insets>(value));
    } else {
        return Control::setProperty(name, value);
    }
    return true;
}

void Button::describe(foundation::Value& dictionary) const {
    Control::describe(dictionary);
    dictionary.set("text", title());
    dictionary.set("textColor", hexText(resolved(title_.textColor())));
    dictionary.set(
        "image", image_ == nullptr ? foundation::Value::null() : foundation::Value(image_->name()));
}

// --- Slider

Slider::Slider() = default;

void Slider::setMinimumValue(double value) {
    minimum_ = std::isnan(value) ? 0 : value;
    maximum_ = std::max(minimum_, maximum_);
    setValue(value_);
}

void Slider::setMaximumValue(double value) {
    maximum_ = std::isnan(value) ? 0 : value;
    minimum_ = std::min(minimum_, maximum_);
    setValue(value_);
}

void Slider::setValue(double value) {
    value_ = std::isnan(value) ? minimum_ : std::clamp(value, minimum_, maximum_);
    setNeedsDisplay();
}

Size Slider::intrinsicContentSize(double) const {
    return {kNoIntrinsicMetric, kSliderHeight};
}

bool Slider::takeTap(Point point) {
    if (!isEnabled()) return false;
    // The middle of the thumb goes from half of it at one end to half of it at the other.
    const double way = bounds().width - kThumb;
    double place = way > 0 ? part((point.x - kThumb / 2) / way) : 0;
    if (effectiveLayoutDirection() == LayoutDirection::rightToLeft) place = 1 - place;
    setValue(minimum_ + place * (maximum_ - minimum_));
    sendAction();
    return true;
}

// The thumb with its shadow is higher than a low slider.
Rect Slider::contentExtent() const {
    return {-3, bounds().height / 2 - 16, std::max(kThumb, bounds().width) + 6, 34};
}

void Slider::drawContent(Canvas& canvas) const {
    const double width = bounds().width;
    const double middle = bounds().height / 2;
    const double range = maximum_ - minimum_;
    double place = range > 0 ? part((value_ - minimum_) / range) : 0;
    const bool isReversed = effectiveLayoutDirection() == LayoutDirection::rightToLeft;
    if (isReversed) place = 1 - place;
    const double thumb = kThumb / 2 + place * std::max(0.0, width - kThumb);
    const Rect track{0, middle - kTrackHeight / 2, width, kTrackHeight};
    canvas.fill(track, kTrackHeight / 2, resolved(maximumTrackColor_));
    const Rect filled = isReversed ? Rect{thumb, track.y, width - thumb, kTrackHeight}
                                   : Rect{0, track.y, thumb, kTrackHeight};
    canvas.fill(filled, kTrackHeight / 2, resolved(minimumTrackColor_));
    // A soft shadow below the thumb, ring by ring.
    const Rect knob{thumb - kThumb / 2, middle - kThumb / 2, kThumb, kThumb};
    for (const double spread : {2.5, 1.5, 0.5}) {
        const Rect ring = knob.movedBy(0, 1);
        canvas.fill(
            {ring.x - spread, ring.y - spread, ring.width + 2 * spread, ring.height + 2 * spread},
            kThumb / 2 + spread, Color{0, 0, 0, 0.05});
    }
    canvas.fill(knob, kThumb / 2, resolved(thumbColor_));
}

bool Slider::setProperty(std::string_view name, const foundation::Value& value) {
    if (name == "minimumTrackColor") {
        minimumTrackColor_ = property::color(value);
    } else if (name == "maximumTrackColor") {
        maximumTrackColor_ = property::color(value);
    } else if (name == "thumbColor") {
        thumbColor_ = property::color(value);
    } else {
        return Control::setProperty(name, value);
    }
    setNeedsDisplay();
    return true;
}

void Slider::describe(foundation::Value& dictionary) const {
    Control::describe(dictionary);
    dictionary.set("value", numberValue(value_));
}

// --- ProgressView

ProgressView::ProgressView() {
    setUserInteractionEnabled(false);
}

void ProgressView::setProgress(double progress) {
    progress_ = part(progress);
    setNeedsDisplay();
}

void ProgressView::setProgressTintColor(const DynamicColor& color) {
    progressTintColor_ = color;
    setNeedsDisplay();
}

void ProgressView::setTrackTintColor(const DynamicColor& color) {
    trackTintColor_ = color;
    setNeedsDisplay();
}

Size ProgressView::intrinsicContentSize(double) const {
    return {kNoIntrinsicMetric, kTrackHeight};
}

void ProgressView::drawContent(Canvas& canvas) const {
    const double height = bounds().height;
    const double radius = height / 2;
    canvas.fill(bounds(), radius, resolved(trackTintColor_));
    if (progress_ <= 0) return;
    // Not narrower than high: it stays a dot.
    const double width = std::min(bounds().width, std::max(height, progress_ * bounds().width));
    const bool isReversed = effectiveLayoutDirection() == LayoutDirection::rightToLeft;
    canvas.fill({isReversed ? bounds().width - width : 0, 0, width, height}, radius,
                resolved(progressTintColor_));
}

bool ProgressView::setProperty(std::string_view name, const foundation::Value& value) {
    if (name == "progressTintColor") {
        setProgressTintColor(property::color(value));
    } else if (name == "trackTintColor") {
        setTrackTintColor(property::color(value));
    } else {
        return View::setProperty(name, value);
    }
    return true;
}

void ProgressView::describe(foundation::Value& dictionary) const {
    View::describe(dictionary);
    dictionary.set("value", numberValue(progress_));
}

// --- PageControl

PageControl::PageControl() {
    setUserInteractionEnabled(false);
}

void PageControl::setNumberOfPages(std::int64_t pages) {
    const std::int64_t count = std::max<std::int64_t>(0, pages);
    if (count == numberOfPages_) return;
    numberOfPages_ = count;
    setCurrentPage(currentPage_);
    invalidateIntrinsicContentSize();
}

void PageControl::setCurrentPage(std::int64_t page) {
    currentPage_ = std::clamp<std::int64_t>(page, 0, std::max<std::int64_t>(0, numberOfPages_ - 1));
    setNeedsDisplay();
}

void PageControl::setPageIndicatorTintColor(const DynamicColor& color) {
    pageColor_ = color;
    setNeedsDisplay();
}

void PageControl::setCurrentPageIndicatorTintColor(const DynamicColor& color) {
    currentColor_ = color;
    setNeedsDisplay();
}

Size PageControl::intrinsicContentSize(double) const {
    return {static_cast<double>(numberOfPages_) * kDotStep, kPageControlHeight};
}

Rect PageControl::contentExtent() const {
    return {0, (bounds().height - kDot) / 2, bounds().width, kDot};
}

void PageControl::drawContent(Canvas& canvas) const {
    const auto room = static_cast<std::int64_t>(
        std::clamp(bounds().width / kDotStep, 0.0, static_cast<double>(numberOfPages_)));
    if (room == 0) return;
    const std::int64_t first =
        std::clamp<std::int64_t>(currentPage_ - room / 2, 0, numberOfPages_ - room);
    const bool isReversed = effectiveLayoutDirection() == LayoutDirection::rightToLeft;
    const double left = (bounds().width - static_cast<double>(room) * kDotStep) / 2;
    for (std::int64_t i = 0; i < room; ++i) {
        const std::int64_t page = first + (isReversed ? room - 1 - i : i);
        const Rect dot{left + static_cast<double>(i) * kDotStep + (kDotStep - kDot) / 2,
                       (bounds().height - kDot) / 2, kDot, kDot};
        canvas.fill(dot, kDot / 2, resolved(page == currentPage_ ? currentColor_ : pageColor_));
    }
}

bool PageControl::setProperty(std::string_view name, const foundation::Value& value) {
    if (name == "pageIndicatorColor") {
        setPageIndicatorTintColor(property::color(value));
    } else if (name == "currentPageIndicatorColor") {
        setCurrentPageIndicatorTintColor(property::color(value));
    } else {
        return View::setProperty(name, value);
    }
    return true;
}

void PageControl::describe(foundation::Value& dictionary) const {
    View::describe(dictionary);
    dictionary.set("currentPage", currentPage_);
}

}  // namespace tavrolin::ui
