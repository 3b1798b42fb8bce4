#include "tavrolin/content_ui/components/carousel_item_view.h"

#include <algorithm>
#include <utility>

#include "tavrolin/core/shared_utility.h"

namespace tavrolin {

using foundation::Value;
using ui::LayoutAttribute;
using ui::LayoutConstraint;
using ui::LayoutRelation;

namespace {

constexpr double kTextSize = 15;
constexpr double kTextSpace = 4;
constexpr platform::Color kTextColor = platform::Color::rgba(0x737678FF);

// Height to width: what is higher is shown in part.
constexpr double kMostRatio = 2;

Value textOrNil(const Value& value) {
    return value.isString() ? value : Value();
}

std::shared_ptr<LayoutConstraint> activated(std::shared_ptr<LayoutConstraint> constraint) {
    constraint->setActive(true);
    return constraint;
}

std::shared_ptr<LayoutConstraint> length(ui::View& view, LayoutAttribute attribute, double points) {
    return activated(LayoutConstraint::make(view, attribute, LayoutRelation::equal, points));
}

std::shared_ptr<LayoutConstraint> pin(ui::View& view, LayoutAttribute edge, ui::View& to) {
    return activated(LayoutConstraint::make(view, edge, LayoutRelation::equal, &to, edge));
}

}  // namespace

std::shared_ptr<CarouselItemView> CarouselItemView::make(const CVNCarousel& item,
                                                         const Style& style) {
    const std::shared_ptr<CarouselItemView> view(new CarouselItemView(style));
    view->setAxis(ui::Axis::vertical);
    view->addPicture();
    view->addTexts(item);
    return view;
}

void CarouselItemView::addPicture() {
    auto picture = std::make_shared<ui::ImageView>();
    pictureView_ = picture.get();
    picture->setContentMode(ui::ContentMode::scaleAspectFill);
    picture->setBackgroundColor(ui::palette::fill);
    picture->setCornerRadius(style_.cornerRadius);
    picture->setClipsToBounds(true);
    pictureHeight_ = length(*picture, LayoutAttribute::height, 0);
    addArrangedSubview(std::move(picture));
}

void CarouselItemView::addTexts(const CVNCarousel& item) {
    auto texts = std::make_shared<StackView>();
    ui::StackView& column = *texts;
    column.setAxis(ui::Axis::vertical);
    column.setSpacing(kTextSpace);
    column.setMargins(style_.textMargins);
    title_.fill(column, item.htTitle, item.imgTitle, true);
    message_.fill(column, item.htBody, item.imgMsg, false);
    const bool hasText = !titleLabel().isHidden() || !messageLabel().isHidden();
    if (!style_.hasOverlay) {
        column.setHidden(!hasText);
        return addArrangedSubview(std::move(texts));
    }
    auto overlay = std::make_shared<CarouselOverlay>();
    overlay_ = overlay.get();
    overlay->setHidden(!hasText);
    overlay->addSubview(std::move(texts));
    ui::pinEdgesToSuperview(column);
    addSubview(std::move(overlay));
    for (const auto edge : {LayoutAttribute::left, LayoutAttribute::right, LayoutAttribute::bottom})
        pin(*overlay_, edge, *pictureView_);
}

void CarouselItemView::addTo(ui::ScrollView& scrollView) {
    scrollView.addSubview(shared_from_this());
    pin(*this, LayoutAttribute::top, scrollView);
    x_ = pin(*this, LayoutAttribute::left, scrollView);
    width_ = length(*this, LayoutAttribute::width, 0);
}

void CarouselItemView::place(double x, double width) {
    x_->setConstant(x);
    if (width_->constant() == width) return;
    width_->setConstant(width);
    setPicture(picture());
    const double textWidth =
        std::max(0.0, width - style_.textMargins.leading - style_.textMargins.trailing);
    title_.limitLines(textWidth, style_.mostTitleLines);
    message_.limitLines(textWidth, style_.mostMessageLines);
}

void CarouselItemView::setPicture(std::shared_ptr<ui::Image> picture) {
    pictureView_->setImage(std::move(picture));
    double ratio = style_.emptyRatio;
    pictureView_->setBackgroundColor(pictureView_->image() ? std::nullopt
                                                           : std::optional(ui::palette::fill));
    if (pictureView_->image()) {
        const platform::Size size = pictureView_->image()->size();
        ratio = std::clamp(size.height / size.width, style_.leastRatio, kMostRatio);
    }
    if (width_) pictureHeight_->setConstant(width_->constant() * ratio);
}

void CarouselItemView::setOverlayColors(const Value& property) {
    if (overlay_ == nullptr) return;
    overlay_->setColors(property);
    applyColorFromCarouselProperty(property, titleLabel());
    applyColorFromCarouselProperty(property, messageLabel());
}

void CarouselItemView::Text::fill(ui::StackView& column, const Value& html, const Value& plain,
                                  bool isBold) {
    auto label = std::make_shared<ui::Label>();
    label_ = label.get();
    html_ = textOrNil(html);
    plain_ = textOrNil(plain);
    isBold_ = isBold;
    label->setFont({.size = kTextSize, .bold = isBold});
    label->setTextAlignment(platform::TextAlignment::left);
    label->setTextColor(kTextColor);
    CVNSharedUtility::sharedInstance().setLabel(*label, html_, plain_, isBold);
    column.addArrangedSubview(std::move(label));
}

void CarouselItemView::Text::limitLines(double width, std::int64_t most) {
    const std::int64_t lines = CVNSharedUtility::sharedInstance().numberOfLinesForTextWithHTMLText(
        html_, plain_, isBold_, width);
    label_->setNumberOfLines(static_cast<int>(std::clamp<std::int64_t>(lines, 1, most)));
}

}  // namespace tavrolin
