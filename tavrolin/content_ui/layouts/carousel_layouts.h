#pragma once

#include <memory>

#include "tavrolin/content_ui/components/media_component.h"
#include "tavrolin/content_ui/layouts/base_layout_view.h"

namespace tavrolin {

/// A layout whose media are a carousel, which gets the presses of the notification's own buttons.
class CarouselLayoutView : public MediaLayoutView {
public:
    void loadMediaComponent() override;
    void didReceiveCarouselButtonResponse(const foundation::Value& actionIdentifier);

    const std::shared_ptr<CVNMediaComponent>& mediaComponent() const { return mediaComponent_; }

private:
    std::shared_ptr<CVNMediaComponent> mediaComponent_;
};

/// Pages of full width.
class CVNLayout71 : public CarouselLayoutView {
public:
    std::string_view className() const override { return "CVNLayout71"; }
    void configureNotification() override;
};

/// Pages from edge to edge, which may turn by themselves.
class CVNLayout72 : public CarouselLayoutView {
public:
    std::string_view className() const override { return "CVNLayout72"; }
    void configureNotification() override;
};

/// Two pictures side by side.
class CVNLayout91 : public CarouselLayoutView {
public:
    std::string_view className() const override { return "CVNLayout91"; }
    void configureNotification() override;
};

/// A row of small pictures.
class CVNLayout92 : public CarouselLayoutView {
public:
    std::string_view className() const override { return "CVNLayout92"; }
    void configureNotification() override;
};

}  // namespace tavrolin
