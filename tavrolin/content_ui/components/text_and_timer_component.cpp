#include "tavrolin/content_ui/components/text_and_timer_component.h"

#include <optional>

#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/components/countdown.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"
#include "tavrolin/ui/text_direction.h"

namespace tavrolin {

using foundation::Value;

namespace {

// A label that ran out of right-to-left text is aligned to the right; a styled one tells by itself.
bool runsRightToLeft(const ui::Label& label) {
    return label.attributedText() ? ui::directionOf(label.text()) == ui::TextDirection::rightToLeft
                                  : label.textAlignment() == platform::TextAlignment::right;
}

}  // namespace

void CVNTextAndTimerComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("rowStackView", rowStackView_);
    connections.view("appIconView", appIconView_);
    connections.view("titleLabel", titleLabel_);
    connections.view("subtitleLabel", subtitleLabel_);
    connections.view("bodyLabel", bodyLabel_);
    connections.view("titleSubtitleTimerStackView", titleSubtitleTimerStackView_);
    connections.view("timerContainerView", timerContainerView_);
    connections.view("timerBackgroundView", timerBackgroundView_);
    connections.view("timerLabel", timerLabel_);
    connections.constraint("labelStackBottomConstraint", labelStackBottomConstraint_);
}

void CVNTextAndTimerComponent::configureNotification() {
    static constexpr std::int64_t kCountdown = 1;
    CVNBaseComponentView::configureNotification();
    updateAppIcon();
    guard("-[CVNTextAndTimerComponent configureNotification]",
          "Could not load timer due to exception  %@", [this] {
              showTexts();
              mirror();
              limitLines();
              const auto& timer = cvnUi().cvnTim;
              if (timer && timer->timerType == kCountdown) {
                  showTimer();
              } else {
                  hideTimer();
              }
          });
}

void CVNTextAndTimerComponent::updateAppIcon() {
    static constexpr std::int64_t kSideBySideLayout = 24;
    const bool isBesidePicture = foundation::integerOrZero(cvnUi().layoutId) == kSideBySideLayout &&
                                 cvnPayload().mediaURLPath;
    appIconView_->setImage(notificationIcon());
    appIconView_->setHidden(!notificationIcon() || isBesidePicture);
}

void CVNTextAndTimerComponent::showTexts() {
    static const auto* nothing = new CVNAlert;
    const auto& aps = notificationPayload() ? notificationPayload()->aps : nullptr;
    const CVNAlert& alert = aps && aps->alert ? *aps->alert : *nothing;
    setLabel(*titleLabel_, cvnPayload().htTitle, alert.title, true);
    setLabel(*subtitleLabel_, cvnPayload().htSubtitle, alert.subtitle, true);
    showBody(alert.body ? alert.body : cvnPayload().body);
}

void CVNTextAndTimerComponent::showBody(const Value& body) {
    layoutIfNeeded();  // lines are counted at the width that the label is going to have
    const double width = bodyLabel_->bounds().width;
    CVNSharedUtility& utility = CVNSharedUtility::sharedInstance();
    const Value plain = utility.processedText(body, false, width, false);
    const Value html = utility.processedText(cvnPayload().htBody, true, width, false);
    bodyLabel_->setLineBreakMode(platform::LineBreakMode::wordWrapping);
    setLabel(*bodyLabel_, html, plain, false);
}

// The first text that is shown decides for the row, whichever way the layout around it runs.
void CVNTextAndTimerComponent::mirror() {
    for (const ui::Label* label : {titleLabel_, subtitleLabel_, bodyLabel_}) {
        if (label->isHidden()) continue;
        rowStackView_->setSemanticContentAttribute(
            runsRightToLeft(*label) ? ui::SemanticContentAttribute::forceRightToLeft
                                    : ui::SemanticContentAttribute::forceLeftToRight);
        return;
    }
}

void CVNTextAndTimerComponent::limitLines() {
    static constexpr std::int64_t kOverlayLayout = 23;
    if (cvnUi().layoutId.integerValue() != kOverlayLayout) return;
    titleLabel_->setNumberOfLines(1);
    subtitleLabel_->setNumberOfLines(1);
    bodyLabel_->setNumberOfLines(2);
}

void CVNTextAndTimerComponent::showTimer() {
    static constexpr double kSpaceAboveTimer = 11;
    const CVNTim& timer = *cvnUi().cvnTim;
    titleSubtitleTimerStackView_->setHidden(false);
    timerContainerView_->setHidden(false);
    labelStackBottomConstraint_->setConstant(kSpaceAboveTimer);
    labelStackBottomConstraint_->setActive(true);
    if (timer.backgroundColor) {
        timerBackgroundView_->setBackgroundColor(
            CVNColorUtility::colorFromHexString(timer.backgroundColor));
    }
    if (const auto color = CVNColorUtility::colorFromHexString(timer.textColor))
        timerLabel_->setTextColor(*color);
    scheduleCountdownTimer();
}

void CVNTextAndTimerComponent::hideTimer() {
    titleSubtitleTimerStackView_->setHidden(true);
    timerContainerView_->setHidden(true);
    if (!cvnUi().cvnTim) return;
    labelStackBottomConstraint_->setConstant(0);
    labelStackBottomConstraint_->setActive(true);
}

void CVNTextAndTimerComponent::scheduleCountdownTimer() {
    stopCountdownTimer();
    const Value end = cvnUi().cvnTim ? cvnUi().cvnTim->endTimestamp : Value();
    endDate_ = CVNPushDateUtility::dateFromString(end).value_or(foundation::Date{});
    updateTimer();
    // Also when the time is up already: the first tick stops it.
    timer_.start(1, [this] { updateTimer(); });
}

void CVNTextAndTimerComponent::stopCountdownTimer() {
    timer_.stop();
}

void CVNTextAndTimerComponent::updateTimer() {
    guard("-[CVNTextAndTimerComponent updateTimer]", "Could not update timer due to exception  %@",
          [this] {
              const Countdown left = countdownAt(platform::current().dispatch->now(), endDate_);
              timerLabel_->setText(left.text);
              if (!left.isOver) return;
              stopCountdownTimer();
              updateTimerText();
          });
}

void CVNTextAndTimerComponent::updateTimerText() {
    const Value feedback = cvnUi().cvnTim ? cvnUi().cvnTim->feedbackText : Value();
    if (CVNSharedUtility::isBlank(feedback)) return;
    setLabel(*titleLabel_, feedback, "", false);
    subtitleLabel_->setHidden(true);
    bodyLabel_->setHidden(true);
}

}  // namespace tavrolin
