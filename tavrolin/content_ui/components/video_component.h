#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/platform/media_player.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin {

/// Plays the downloaded film once it is told to, in the film's own proportions, or 16 to 9 where
/// they aren't known. Outlets: videoContentView, playButton, videoHeightConstraint. Operation for
/// interface files: playVideoNotificationEvent:.
class CVNVideoComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNVideoComponent"; }
    ~CVNVideoComponent() override;
    void connect(ui::Connections& connections) override;
    void configureNotification() override;
    void layoutSubviews() override;

    void playVideoNotificationEvent(ui::View& sender);
    void itemDidFinishPlaying();

private:
    void showPlayer(const std::string& path);
    double ratio();

    ui::View* videoContentView_ = nullptr;
    ui::Button* playButton_ = nullptr;
    ui::LayoutConstraint* videoHeightConstraint_ = nullptr;
    std::shared_ptr<platform::MediaPlayer> player_;  // the layer shows it
    std::optional<double> ratio_;                    // of the width to the height, once asked for
};

}  // namespace tavrolin
