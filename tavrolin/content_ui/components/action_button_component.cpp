#include "tavrolin/content_ui/components/action_button_component.h"

#include <algorithm>
#include <string>

#include "tavrolin/actions/action_button_helper.h"
#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/layout_utility.h"
#include "tavrolin/content_ui/notification_view_helper.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

using foundation::integerOrZero;
using foundation::stringOrEmpty;
using foundation::Value;
using platform::Color;
using platform::NotificationAction;
using ui::LayoutAttribute;
using ui::LayoutConstraint;
using ui::LayoutRelation;

namespace {

constexpr std::int64_t kSmallImageLayout = 24;
constexpr std::int64_t kEdgeToEdgeCarouselLayout = 72;
constexpr std::int64_t kDismissingType = 3;
constexpr int kFirstVersionWithActions = 12;

// In points.
constexpr double kButtonHeight = 40;
constexpr double kButtonSpacing = 4;
constexpr double kInset = 4;
constexpr double kInsetAlone = 10;
constexpr double kStandardRadius = 8;
constexpr double kTitleSize = 15;

// Behind a button that the payload gives no colours. Titles are black in the dark too, so that it
// stays a light one there, and opaque: they can be read on any background.
constexpr ui::DynamicColor kPlainBackground{Color::rgba(0xE4E4E6FF), Color::rgba(0x98989DFF)};

// By the buttons' places: an entry counts for as many of them as its index has pieces, whatever
// these are.
std::vector<Value> stylesFor(std::size_t buttons, const Value& list) {
    std::vector<Value> styles;
    if (!list.isArray()) return styles;
    for (const Value& entry : list.items()) {
        const Value style = entry.isDictionary() ? entry : Value();
        const std::string_view index = stringOrEmpty(style[kPNSmallImageButtonIndexKey]);
        const auto separators = std::ranges::count(index, kPNSmallImageButtonSeperator.front());
        const auto pieces = static_cast<std::size_t>(separators) + 1;
        styles.insert(styles.end(), std::min(pieces, buttons - styles.size()), style);
    }
    return styles;
}

// A payload that says only the title's colour has chosen it for the notification's background.
void applyStyle(ui::Button& button, const Value& style) {
    const auto background = CVNColorUtility::colorFromHexString(style[kPNABBackgroundColor]);
    const auto title = CVNColorUtility::colorFromHexString(style[kPNABTextColor]);
    button.setTitleColor(title.value_or(Color::black()));
    if (background) {
        button.setBackgroundColor(*background);
    } else if (!title) {
        button.setBackgroundColor(kPlainBackground);
    }
    const Value& radius = style[kPNABRadius];
    const bool isGiven = radius.isNumber() || radius.isString();
    button.setCornerRadius(isGiven ? std::max(0.0, radius.doubleValue()) : kStandardRadius);
}

// Keeps its natural width at the leading edge, where there is room.
std::shared_ptr<ui::View> containerOf(const std::shared_ptr<ui::Button>& button) {
    button->setContentInsets({.leading = kInsetAlone, .trailing = kInsetAlone});
    auto container = std::make_shared<ui::View>();
    container->addSubview(button);
    const auto pin = [&](LayoutAttribute edge, LayoutRelation relation) {
        LayoutConstraint::make(*button, edge, relation, container.get(), edge)->setActive(true);
    };
    pin(LayoutAttribute::top, LayoutRelation::equal);
    pin(LayoutAttribute::bottom, LayoutRelation::equal);
    pin(LayoutAttribute::leading, LayoutRelation::equal);
    pin(LayoutAttribute::trailing, LayoutRelation::lessThanOrEqual);
    return container;
}

}  // namespace

void CVNActionButtonComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("actionButtonStackView", actionButtonStackView_);
    connections.constraint("topSpaceConstraint", topSpaceConstraint_);
    connections.constraint("bottomSpaceConstraint", bottomSpaceConstraint_);
}

void CVNActionButtonComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    guard(
        "-[CVNActionButtonComponent configureNotification]",
        "Could not set action button due to exception  %@", [this] {
            const auto& buttons = cvnPayload().actionButton;
            if (recordCount(buttons) == 0) return;
            if (integerOrZero(cvnUi().layoutId) == kSmallImageLayout)
                return setupActionButtonView();
            if (platform::current().systemVersion < kFirstVersionWithActions) return;
            if (const auto context = CVNNotificationViewHelper::getNotificationExtenstionContent())
                context->setNotificationActions(getDefaultButton(buttons));
            topSpaceConstraint_->setConstant(0);
        });
}

// --- The system's buttons ----------------------------------------------------------------------

CVNActionButtonComponent::Actions CVNActionButtonComponent::getDefaultButton(
    const RecordList<CVNActionButton>& buttons) const {
    const std::int64_t layoutId = integerOrZero(cvnUi().layoutId);
    const Value& type = cvnPayload().type;
    if (layoutId == 71 || layoutId == 91 ||
        (isCarouselType(type) && !CVNLayoutUtility::isLayoutIdSupported(cvnUi().layoutId, type)))
        return getDefaultNextPrevButton();

    Actions actions;
    const auto& reply = cvnPayload().replyButton;
    // The edge-to-edge carousel has buttons only beside a reply: deliberate.
    if (!reply && layoutId == kEdgeToEdgeCarouselLayout) return actions;
    if (reply) actions.push_back(getDefaultReplyButton(*reply));
    for (std::int64_t i = 0; i < recordCount(buttons); ++i) {
        const auto button = recordAtIndex(buttons, i);
        const std::int64_t action = button ? integerOrZero(button->actionType) : 0;
        if (!button || action == kActionButtonTypeReply) continue;
        actions.push_back({.identifier = std::to_string(i),
                           .title = std::string(stringOrEmpty(button->actionName)),
                           .options = action == kDismissingType ? platform::kActionDestructive
                                                                : platform::kActionForeground});
    }
    return actions;
}

CVNActionButtonComponent::Actions CVNActionButtonComponent::getDefaultNextPrevButton() {
    const auto button = [](std::string_view identifier, std::string_view title) {
        return NotificationAction{.identifier = std::string(identifier),
                                  .title = std::string(title),
                                  .options = platform::kActionForeground};
    };
    return {button(kCarouselNextActionButtonIdentifier, kCarouselNextActionButtonTitle),
            button(kCarouselPreviousActionButtonIdentifier, kCarouselPreviousActionButtonTitle)};
}

NotificationAction CVNActionButtonComponent::getDefaultReplyButton(
    const CVNReplyActionButton& button) const {
    const std::string name(stringOrEmpty(button.name));
    return {.identifier = std::to_string(recordCount(cvnPayload().actionButton)),
            .title = name,
            // The button's type becomes option bits: deliberate.
            .options = static_cast<std::uint64_t>(integerOrZero(button.actionType)),
            .textInput = NotificationAction::TextInput{
                name, std::string(stringOrEmpty(button.placeholderText))}};
}

// --- Its own buttons ---------------------------------------------------------------------------

void CVNActionButtonComponent::setupActionButtonView() {
    topSpaceConstraint_->setConstant(0);
    bottomSpaceConstraint_->setConstant(16);
    ui::StackView& row = *actionButtonStackView_;
    row.setSpacing(kButtonSpacing);
    row.setAxis(ui::Axis::horizontal);
    row.setDistribution(ui::StackDistribution::fillEqually);
    while (!row.subviews().empty())
        row.subviews().back()->removeFromSuperview();

    const auto& buttons = *cvnPayload().actionButton;
    const Value& settings = cvnUi().cvnLui;
    std::vector<Value> styles = stylesFor(
        buttons.size(), settings.isDictionary() ? settings[kPNSmallImageButton] : Value());
    styles.resize(buttons.size());
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        if (!buttons[i]) continue;
        const auto button = makeButton(*buttons[i], static_cast<std::int64_t>(i), styles[i]);
        row.addArrangedSubview(buttons.size() == 1 ? containerOf(button) : button);
    }
}

std::shared_ptr<ui::Button> CVNActionButtonComponent::makeButton(const CVNActionButton& button,
                                                                 std::int64_t index,
                                                                 const Value& style) {
    auto view = std::make_shared<ui::Button>();
    view->setTag(index);
    view->setTitle(stringOrEmpty(button.actionName));
    view->setTitleFont(platform::Font::systemFontOfSize(kTitleSize));
    view->setContentInsets({.leading = kInset, .trailing = kInset});
    view->setClipsToBounds(true);
    view->setAction([this](ui::View& sender) { tapActionButton(sender); });
    applyStyle(*view, style);
    LayoutConstraint::make(*view, LayoutAttribute::height, LayoutRelation::equal, kButtonHeight)
        ->setActive(true);
    return view;
}

void CVNActionButtonComponent::tapActionButton(ui::View& button) {
    CVNPushPreferencesManager::setActionButtonIndex(button.tag());
    tapNotificationEvent(button);
}

}  // namespace tavrolin
