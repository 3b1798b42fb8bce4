#pragma once

#include <memory>
#include <string>

#include "tavrolin/content_ui/components/base_component_view.h"

namespace tavrolin {

/// The media slot: holds the component for the notification's type, and shows it when there is
/// something to show. Outlet: mediaContainer.
class CVNMediaComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNMediaComponent"; }
    void connect(ui::Connections& connections) override;
    void configureNotification() override;

    void loadComponentByLayoutId();
    /// Passes it on to a carousel where the layout's buttons are the carousel's.
    void didReceiveCarouselButtonResponse(const foundation::Value& actionIdentifier);

    /// The component that was chosen, shown or not; null when there is none.
    const std::shared_ptr<CVNBaseComponentView>& baseContainerView() const {
        return baseContainerView_;
    }

private:
    std::string componentClassName() const;

    ui::View* mediaContainer_ = nullptr;
    std::shared_ptr<CVNBaseComponentView> baseContainerView_;
};

}  // namespace tavrolin
