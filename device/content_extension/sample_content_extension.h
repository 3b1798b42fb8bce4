#pragma once

#include <memory>

#include "tavrolin/content_ui/custom_notification_view_controller.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/traits.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::device {

/// The sample app's content extension, as a host would write it: its interface is one view, which
/// the library fills.
class SampleContentExtension : public CVNCustomNotificationViewController {
protected:
    std::shared_ptr<ui::View> loadView() override {
        auto view = std::make_shared<ui::View>();
        auto custom = std::make_shared<ui::View>();
        custom->setOutlet("customView");
        custom->setBackgroundColor(ui::palette::background);
        setCustomView(custom.get());
        view->addSubview(custom);
        ui::pinEdgesToSuperview(*custom);
        return view;
    }
};

}  // namespace tavrolin::device
