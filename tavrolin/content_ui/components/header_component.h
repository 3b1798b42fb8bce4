#pragma once

#include "tavrolin/content_ui/components/base_component_view.h"

namespace tavrolin {

/// The header slot: the texts with a countdown, or a countdown as a bar; nothing without one, since
/// the system shows the texts itself. Outlets: timerComponentContainer,
/// progressComponentContainer.
class CVNHeaderComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNHeaderComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;

    void loadTimerComponent();
    void loadProgressComponent();

private:
    ui::View* timerComponentContainer_ = nullptr;
    ui::View* progressComponentContainer_ = nullptr;
};

}  // namespace tavrolin
