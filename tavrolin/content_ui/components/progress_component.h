#pragma once

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/content_ui/components/repeating_timer.h"
#include "tavrolin/foundation/date.h"
#include "tavrolin/ui/controls.h"

namespace tavrolin {

/// The texts, and below them a countdown with a title, over a bar that fills from the moment the
/// notification was received to the end. Where the title runs from right to left, so does the bar.
///
/// Outlets: textComponentContainer, progressContainerView (what is not the texts),
/// timerBackgroundView, titleLabel, timerLabel, progressView.
class CVNProgressComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNProgressComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;

    /// Shows the countdown in the payload's colours, and counts down to its end, once a second. A
    /// date that is none is the epoch.
    void scheduleCountdownTimer();
    void stopCountdownTimer();
    void updateTimer();
    /// The notification's own texts.
    void loadTextComponent();

private:
    void showTitle(const foundation::Value& html);
    void showColors();

    ui::View* textComponentContainer_ = nullptr;
    ui::View* progressContainerView_ = nullptr;
    ui::View* timerBackgroundView_ = nullptr;
    ui::Label* titleLabel_ = nullptr;
    ui::Label* timerLabel_ = nullptr;
    ui::ProgressView* progressView_ = nullptr;
    foundation::Date startDate_;
    foundation::Date endDate_;
    RepeatingTimer timer_;
};

}  // namespace tavrolin
