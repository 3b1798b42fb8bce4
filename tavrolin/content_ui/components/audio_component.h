#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/platform/media_player.h"
#include "tavrolin/ui/controls.h"

namespace tavrolin {

/// Plays the downloaded sound. Outlets: playerSlider, startTime, endTime, playPauseButton.
/// Operations for interface files: playPauseNotificationEvent:, audioSeekEvent:.
class CVNAudioComponent : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "CVNAudioComponent"; }
    void connect(ui::Connections& connections) override;
    /// Without a downloaded file it stays as it is. The player is there a turn of the main queue
    /// later.
    void configureNotification() override;

    void playPauseNotificationEvent(ui::View& sender);
    void audioSeekEvent(ui::View& sender);
    /// While it is there, the slider and the times follow the sound.
    void addAudioObserver();
    void removeAudioObserver();
    /// "MM:SS" of what is above whole hours; from a full day on "HH:MM:SS", of what is above whole
    /// days. The hours in between are dropped, deliberately.
    static std::string formatSecondvalue(std::int32_t seconds);
    /// In seconds; 0 when it isn't known.
    double audioDuration();
    /// An asset of the library's bundle.
    void setPlayPauseButtonIconFor(std::string_view name);

private:
    void loadPlayer(const std::string& path);
    void showTime(double seconds);
    void returnToStart();

    ui::Slider* playerSlider_ = nullptr;
    ui::Label* startTime_ = nullptr;
    ui::Label* endTime_ = nullptr;
    ui::Button* playPauseButton_ = nullptr;
    std::unique_ptr<platform::MediaPlayer> player_;
    std::unique_ptr<platform::MediaPlayer::Observation> observation_;  // ends before the player
};

}  // namespace tavrolin
