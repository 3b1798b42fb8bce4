#include "tavrolin/content_ui/components/progress_component.h"

#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/components/countdown.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"
#include "tavrolin/ui/text_direction.h"

namespace tavrolin {

using foundation::Value;

void CVNProgressComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("textComponentContainer", textComponentContainer_);
    connections.view("progressContainerView", progressContainerView_);
    connections.view("timerBackgroundView", timerBackgroundView_);
    connections.view("titleLabel", titleLabel_);
    connections.view("timerLabel", timerLabel_);
    connections.view("progressView", progressView_);
}

void CVNProgressComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    loadTextComponent();
    scheduleCountdownTimer();
}

void CVNProgressComponent::loadTextComponent() {
    fillSlot(*textComponentContainer_, "CVNTextAndTimerComponent");
}

void CVNProgressComponent::scheduleCountdownTimer() {
    stopCountdownTimer();
    if (!cvnUi().cvnTim) return;
    const CVNTim& timer = *cvnUi().cvnTim;
    showColors();
    showTitle(timer.progressBarTimerText);
    const auto date = [](const Value& text) {
        return CVNPushDateUtility::dateFromString(text).value_or(foundation::Date{});
    };
    startDate_ = date(cvnPayload().receivedDate);
    endDate_ = date(timer.endTimestamp);
    updateTimer();
    // Also when the time is up already: the first tick stops it.
    timer_.start(1, [this] { updateTimer(); });
}

void CVNProgressComponent::stopCountdownTimer() {
    timer_.stop();
}

void CVNProgressComponent::updateTimer() {
    guard("-[CVNProgressComponent updateTimer]", "Could not update timer due to exception  %@",
          [this] {
              const foundation::Date now = platform::current().dispatch->now();
              const Countdown left = countdownAt(now, endDate_);
              timerLabel_->setText(left.text);
              progressView_->setProgress(
                  left.isOver ? 1
                              : foundation::secondsBetween(startDate_, now) /
                                    foundation::secondsBetween(startDate_, endDate_));
              if (!left.isOver) return;
              stopCountdownTimer();
              showTitle(cvnUi().cvnTim ? cvnUi().cvnTim->feedbackText : Value());
          });
}

void CVNProgressComponent::showColors() {
    const CVNTim& timer = *cvnUi().cvnTim;
    if (const auto color = CVNColorUtility::colorFromHexString(timer.textColor))
        timerLabel_->setTextColor(*color);
    if (const auto color = CVNColorUtility::colorFromHexString(timer.backgroundColor)) {
        timerBackgroundView_->setBackgroundColor(*color);
        progressView_->setProgressTintColor(*color);
    }
}

void CVNProgressComponent::showTitle(const Value& html) {
    setLabel(*titleLabel_, html, "", false);
    const auto color =
        CVNColorUtility::colorFromHexString(cvnUi().cvnTim ? cvnUi().cvnTim->textColor : Value());
    const auto text = titleLabel_->attributedText();
    if (color && text) titleLabel_->setAttributedText(setForegroundColor(color, *text));
    const bool isReversed = ui::directionOf(titleLabel_->text()) == ui::TextDirection::rightToLeft;
    progressContainerView_->setSemanticContentAttribute(
        isReversed ? ui::SemanticContentAttribute::forceRightToLeft
                   : ui::SemanticContentAttribute::unspecified);
}

}  // namespace tavrolin
