#pragma once

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/content_ui/components/repeating_timer.h"
#include "tavrolin/foundation/date.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin {

/// Title, subtitle and text, the app's icon beside them, a countdown below them. Where the texts
/// run from right to left, the icon stands at their right.
///
/// Outlets: rowStackView (icon and texts), appIconView, titleLabel, subtitleLabel, bodyLabel,
/// titleSubtitleTimerStackView, timerContainerView, timerBackgroundView, timerLabel,
/// labelStackBottomConstraint.
class CVNTextAndTimerComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNTextAndTimerComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;

    /// Counts down to the payload's end, once a second.
    void scheduleCountdownTimer();
    void stopCountdownTimer();
    void updateTimer();
    /// What is shown once the time is up.
    void updateTimerText();
    /// The notification's icon; no icon view without one, nor beside a picture.
    void updateAppIcon();

private:
    void showTexts();
    void showBody(const foundation::Value& body);
    void limitLines();
    void showTimer();
    void hideTimer();
    void mirror();

    ui::StackView* rowStackView_ = nullptr;
    ui::ImageView* appIconView_ = nullptr;
    ui::Label* titleLabel_ = nullptr;
    ui::Label* subtitleLabel_ = nullptr;
    ui::Label* bodyLabel_ = nullptr;
    ui::View* titleSubtitleTimerStackView_ = nullptr;
    ui::View* timerContainerView_ = nullptr;
    ui::View* timerBackgroundView_ = nullptr;
    ui::Label* timerLabel_ = nullptr;
    ui::LayoutConstraint* labelStackBottomConstraint_ = nullptr;
    foundation::Date endDate_;
    RepeatingTimer timer_;
};

}  // namespace tavrolin
