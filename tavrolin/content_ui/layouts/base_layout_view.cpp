#include "tavrolin/content_ui/layouts/base_layout_view.h"

#include "tavrolin/core/logger.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

void CVNBaseLayoutView::connect(ui::Connections& connections) {
    connections.view("headerComponentContainer", headerComponentContainer_);
    connections.view("ratingComponentContainer", ratingComponentContainer_);
    connections.view("actionButtonComponentContainer", actionButtonComponentContainer_);
}

void CVNBaseLayoutView::loadHeaderComponent() {
    fillSlot(*headerComponentContainer_, "CVNHeaderComponent");
}

void CVNBaseLayoutView::loadRatingComponent() {
    fillSlot(*ratingComponentContainer_, "CVNRatingComponent");
}

void CVNBaseLayoutView::loadActionButtonComponent() {
    fillSlot(*actionButtonComponentContainer_, "CVNActionButtonComponent");
}

void CVNBaseLayoutView::compose(std::string_view operation, std::string_view message,
                                const std::function<void()>& loadSlots) {
    guard(operation, message, [&] {
        NotificationView::configureNotification();
        loadSlots();
    });
}

void MediaLayoutView::connect(ui::Connections& connections) {
    CVNBaseLayoutView::connect(connections);
    connections.view("mediaComponentContainer", mediaComponentContainer_);
}

void MediaLayoutView::loadMediaComponent() {
    fillSlot(*mediaComponentContainer_, "CVNMediaComponent");
}

}  // namespace tavrolin
