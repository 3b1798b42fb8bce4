#include "tavrolin/content_ui/components/header_component.h"

#include "tavrolin/core/logger.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

void CVNHeaderComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("timerComponentContainer", timerComponentContainer_);
    connections.view("progressComponentContainer", progressComponentContainer_);
}

void CVNHeaderComponent::configureNotification() {
    static constexpr std::int64_t kProgressBar = 2;
    CVNBaseComponentView::configureNotification();
    guard("-[CVNHeaderComponent configureNotification]",
          "Could not load header component due to exception  %@", [this] {
              const auto& timer = cvnUi().cvnTim;
              if (!timer) return;
              if (timer->timerType == kProgressBar) {
                  loadProgressComponent();
              } else {
                  loadTimerComponent();
              }
          });
}

void CVNHeaderComponent::loadTimerComponent() {
    fillSlot(*timerComponentContainer_, "CVNTextAndTimerComponent");
}

void CVNHeaderComponent::loadProgressComponent() {
    fillSlot(*progressComponentContainer_, "CVNProgressComponent");
}

}  // namespace tavrolin
