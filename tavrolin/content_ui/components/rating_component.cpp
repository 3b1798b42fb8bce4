#include "tavrolin/content_ui/components/rating_component.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/contrast.h"
#include "tavrolin/content_ui/emoji_utility.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/text_direction.h"

namespace tavrolin {

using foundation::Value;
using platform::Color;

namespace {

// --- Colours

// The payload's, unless nothing could be seen of it.
ui::DynamicColor textColor(const Value& hex, const ui::DynamicColor& otherwise) {
    const auto color = CVNColorUtility::colorFromHexString(hex);
    return color && color->alpha > 0 ? *color : otherwise;
}

// What texts of that colour can be read on, whatever lies behind it: a dark box for a light one.
Color boxColor(const Color& text, bool isSelected) {
    static constexpr double kEquallyReadable = 0.28;  // on either kind of box
    const unsigned long light = isSelected ? 0xCFE2FFFF : 0xF2F2F7FF;
    const unsigned long dark = isSelected ? 0x0052CCFF : 0x2C2C2EFF;
    return Color::rgba(luminance(text) < kEquallyReadable ? light : dark);
}

// --- Buttons

// A scale of numbers may be given as such.
std::string titleOf(const CVNRatingButton& option) {
    const Value& text = option.ratinButtonText;
    return text.isNumber() ? text.description() : std::string(foundation::stringOrEmpty(text));
}

std::shared_ptr<ui::Button> makeStar() {
    static constexpr double kSide = 44;
    // Whatever the icon's size; many stars in a row are narrower.
    static constexpr ui::LayoutPriority kPreferred = 900;
    auto star = std::make_shared<ui::Button>();
    star->setContentInsets({.top = 6, .leading = 2, .bottom = 6, .trailing = 2});
    using enum ui::LayoutAttribute;
    using enum ui::LayoutRelation;
    ui::LayoutConstraint::make(*star, width, equal, kSide, kPreferred)->setActive(true);
    ui::LayoutConstraint::make(*star, height, equal, kSide)->setActive(true);
    return star;
}

std::shared_ptr<ui::Button> makeOption(std::string_view title) {
    static constexpr double kTextSize = 15;
    static constexpr double kEmojiSize = 28;
    static constexpr double kLeastHeight = 44;
    auto option = std::make_shared<ui::Button>();
    option->setTitle(title);
    const bool isEmoji = CVNEmojiUtility::containsEmoji(platform::StyledText::plain(title, {}));
    option->setTitleFont(platform::Font::systemFontOfSize(isEmoji ? kEmojiSize : kTextSize));
    option->setContentInsets({.top = 8, .leading = 12, .bottom = 8, .trailing = 12});
    option->setCornerRadius(8);
    option->setBorder(1, ui::palette::separator);
    using enum ui::LayoutAttribute;
    using enum ui::LayoutRelation;
    ui::LayoutConstraint::make(*option, height, greaterThanOrEqual, kLeastHeight)->setActive(true);
    return option;
}

}  // namespace

void CVNRatingComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("ratingStackContainerView", ratingStackContainerView_);
    connections.view("ratingViewStackView", ratingViewStackView_);
    connections.view("submitButtonContainerView", submitButtonContainerView_);
    connections.view("submitButton", submitButton_);
    connections.action("actionSubmit:", [this](ui::View& sender) { actionSubmit(sender); });
}

void CVNRatingComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    rating_ = cvnUi().cvnRat ? cvnUi().cvnRat : std::make_shared<CVNRat>();
    setupSubmitButton();
    setupRatingButtons();
    mirror();
    const std::int64_t chosen = chosenIndex();
    updateRating(chosen);
    submitButtonContainerView_->setHidden(chosen < 0);
}

bool CVNRatingComponent::hasStars() const {
    static constexpr std::int64_t kStars = 1;
    return rating_->ratingType == kStars;
}

std::int64_t CVNRatingComponent::chosenIndex() const {
    const std::string_view value = foundation::stringOrEmpty(rating_->ratingValue);
    if (value.empty() || value == kPNRatingNotGiven) return -1;
    const auto count = static_cast<std::int64_t>(ratingButtonArray_.size());
    if (hasStars()) {
        const std::int64_t stars = rating_->ratingValue.integerValue();
        return stars > 0 && stars <= count ? stars - 1 : -1;
    }
    return rating_->ratingIndex >= 0 && rating_->ratingIndex < count ? rating_->ratingIndex : -1;
}

void CVNRatingComponent::setupSubmitButton() {
    const std::string_view title = foundation::stringOrEmpty(rating_->confirmButtonText);
    submitButton_->setTitle(CVNSharedUtility::isBlank(title) ? "Submit" : title);
}

// --- Buttons

void CVNRatingComponent::setupRatingButtons() {
    const std::vector<std::shared_ptr<ui::View>> before = ratingViewStackView_->subviews();
    for (const auto& row : before)
        row->removeFromSuperview();
    ratingButtonArray_.clear();
    if (hasStars()) {
        addStars();
    } else {
        addOptions();
    }
    ratingStackContainerView_->setHidden(ratingButtonArray_.empty());
}

void CVNRatingComponent::addStars() {
    static constexpr std::int64_t kMostStars = 20;
    static constexpr std::int64_t kUsualStars = 5;
    static constexpr std::size_t kMostInRow = 10;
    selectedIcon_ = getRatingIconOfType(RatingIcon::selected);
    unselectedIcon_ = getRatingIconOfType(RatingIcon::unselected);
    const std::int64_t scale = rating_->ratingScale;
    std::vector<std::shared_ptr<ui::Button>> stars(
        static_cast<std::size_t>(scale >= 1 && scale <= kMostStars ? scale : kUsualStars));
    std::generate(stars.begin(), stars.end(), makeStar);
    ratingViewStackView_->setAlignment(ui::StackAlignment::center);
    ratingViewStackView_->setSpacing(0);
    addRows(stars, kMostInRow, 0);
}

void CVNRatingComponent::addOptions() {
    static constexpr double kSpacing = 8;
    static constexpr double kMostInRow = 5;
    if (!rating_->ratingButtons) return;
    std::vector<std::shared_ptr<ui::Button>> options;
    double widest = 0;
    for (const auto& each : *rating_->ratingButtons) {
        options.push_back(makeOption(titleOf(*each)));
        widest =
            std::max(widest, options.back()->intrinsicContentSize(platform::kUnlimitedWidth).width);
    }
    layoutIfNeeded();  // titles are to fit the width that the rows are going to have
    const double room = ratingViewStackView_->bounds().width;
    const double fitting = std::floor((room + kSpacing) / (widest + kSpacing));
    ratingViewStackView_->setAlignment(ui::StackAlignment::fill);
    ratingViewStackView_->setSpacing(kSpacing);
    addRows(options, static_cast<std::size_t>(std::clamp(fitting, 1.0, kMostInRow)), kSpacing);
}

// Rows of about the same length.
void CVNRatingComponent::addRows(const std::vector<std::shared_ptr<ui::Button>>& buttons,
                                 std::size_t mostInRow, double spacing) {
    const std::size_t rows = (buttons.size() + mostInRow - 1) / mostInRow;
    for (std::size_t i = 0; i < rows; ++i) {
        const auto row = std::make_shared<ui::StackView>();
        row->setDistribution(ui::StackDistribution::fillEqually);
        row->setSpacing(spacing);
        const std::size_t end =
            ratingButtonArray_.size() + buttons.size() / rows + (i < buttons.size() % rows ? 1 : 0);
        while (ratingButtonArray_.size() < end) {
            const auto& button = buttons[ratingButtonArray_.size()];
            button->setTag(static_cast<std::int64_t>(ratingButtonArray_.size()));
            button->setAction([this](ui::View& sender) { tapRatingButton(sender); });
            row->addArrangedSubview(button);
            ratingButtonArray_.push_back(button.get());
        }
        ratingViewStackView_->addArrangedSubview(row);
    }
}

// The first word there is decides.
void CVNRatingComponent::mirror() {
    std::string words;
    for (const ui::Button* button : ratingButtonArray_)
        words += button->title();
    const bool isReversed =
        ui::directionOf(words + submitButton_->title()) == ui::TextDirection::rightToLeft;
    setSemanticContentAttribute(isReversed ? ui::SemanticContentAttribute::forceRightToLeft
                                           : ui::SemanticContentAttribute::unspecified);
}

std::shared_ptr<ui::Image> CVNRatingComponent::getRatingIconOfType(RatingIcon type) const {
    const bool isSelected = type == RatingIcon::selected;
    const Value& path = isSelected ? rating_->selectedIconURLPath : rating_->unselectedIconURLPath;
    if (!CVNSharedUtility::isEmptyString(path)) {
        if (auto icon = getImageFromURL(foundation::URL::fileURLWithPath(path.string())))
            return icon;
    }
    return ui::Image::named(
        isSelected ? "cvn-pn-rating-star-icon-selected" : "cvn-pn-rating-star-icon-unselected",
        platform::current().bundles->library(), traitCollection().displayScale);
}

// --- The choice

void CVNRatingComponent::updateRating(std::int64_t index) {
    const ui::DynamicColor selected =
        textColor(rating_->selectedTextColor, platform::Color::white());
    const ui::DynamicColor unselected = textColor(rating_->unselectedTextColor, ui::palette::label);
    for (ui::Button* button : ratingButtonArray_) {
        if (hasStars()) {
            button->setImage(button->tag() <= index ? selectedIcon_ : unselectedIcon_);
            continue;
        }
        const bool isChosen = button->tag() == index;
        const ui::DynamicColor& text = isChosen ? selected : unselected;
        button->setTitleColor(text);
        button->setBackgroundColor(
            ui::DynamicColor(boxColor(text.light, isChosen), boxColor(text.dark, isChosen)));
    }
}

void CVNRatingComponent::tapRatingButton(ui::View& button) {
    log(LogLevel::info, "-[CVNRatingComponent tapRatingButton:]",
        formatMessage("Changed rating to %ld", {button.tag()}));
    updateNotificationRating(button.tag());
}

void CVNRatingComponent::updateNotificationRating(std::int64_t index) {
    guard("-[CVNRatingComponent updateNotificationRating:]",
          "Could not update rating due to exception  %@", [&] {
              if (index < 0 || index >= static_cast<std::int64_t>(ratingButtonArray_.size())) {
                  foundation::Exception::raise(foundation::Exception::kRange,
                                               "there is no such button");
              }
              updateRating(index);
              submitButtonContainerView_->setHidden(false);
              if (hasStars()) {
                  rating_->ratingValue = std::to_string(index + 1);
              } else {
                  const auto place = static_cast<std::size_t>(index);
                  rating_->ratingValue = ratingButtonArray_[place]->title();
                  rating_->ratingIndex = index;
              }
          });
}

void CVNRatingComponent::actionSubmit(ui::View& button) {
    CVNPushPreferencesManager::setRatingInfoWithRatingValue(rating_->ratingValue,
                                                            rating_->ratingIndex);
    tapNotificationEvent(button);
}

}  // namespace tavrolin
