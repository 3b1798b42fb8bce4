#include "tavrolin/content_ui/components/audio_component.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "tavrolin/content_ui/two_digits.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

namespace {

constexpr std::string_view kPlayIcon = "cvn-pn-audio-play";
constexpr std::string_view kPauseIcon = "cvn-pn-audio-pause";
constexpr double kObserverInterval = 0.5;  // seconds

std::int32_t wholeSeconds(double seconds) {
    static constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(seconds, 0.0, kMost));
}

}  // namespace

void CVNAudioComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("playerSlider", playerSlider_);
    connections.view("startTime", startTime_);
    connections.view("endTime", endTime_);
    connections.view("playPauseButton", playPauseButton_);
    connections.action("playPauseNotificationEvent:",
                       [this](ui::View& sender) { playPauseNotificationEvent(sender); });
    connections.action("audioSeekEvent:", [this](ui::View& sender) { audioSeekEvent(sender); });
}

void CVNAudioComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    const std::string path(foundation::stringOrEmpty(cvnPayload().mediaURLPath));
    if (path.empty()) return;
    platform::current().dispatch->asyncMain([weak = weak_from_this(), path] {
        if (const auto component = std::dynamic_pointer_cast<CVNAudioComponent>(weak.lock()))
            component->loadPlayer(path);
    });
}

void CVNAudioComponent::loadPlayer(const std::string& path) {
    removeAudioObserver();
    player_ = platform::drawing().mediaPlayers->playerWithFile(path);  // at its start
    player_->setDidPlayToEnd([weak = weak_from_this()] {
        if (const auto component = std::dynamic_pointer_cast<CVNAudioComponent>(weak.lock()))
            component->returnToStart();
    });
    const double duration = audioDuration();
    playerSlider_->setMinimumValue(0);
    playerSlider_->setMaximumValue(duration);
    playerSlider_->setValue(0);
    playerSlider_->setContinuous(true);
    setPlayPauseButtonIconFor(kPlayIcon);
    startTime_->setText(formatSecondvalue(0));
    endTime_->setText(formatSecondvalue(wholeSeconds(duration)));
}

void CVNAudioComponent::playPauseNotificationEvent(ui::View& /*sender*/) {
    if (!player_) return;
    if (player_->rate() == 0 || player_->error()) {
        setPlayPauseButtonIconFor(kPauseIcon);
        player_->play();
        addAudioObserver();
    } else {
        setPlayPauseButtonIconFor(kPlayIcon);
        player_->pause();
        removeAudioObserver();
    }
}

void CVNAudioComponent::audioSeekEvent(ui::View& /*sender*/) {
    if (!player_) return;
    player_->seekToTime(playerSlider_->value());
    startTime_->setText(formatSecondvalue(wholeSeconds(playerSlider_->value())));
}

void CVNAudioComponent::addAudioObserver() {
    if (!player_) return;
    removeAudioObserver();
    observation_ = player_->addPeriodicTimeObserver(
        kObserverInterval, [weak = weak_from_this()](double seconds) {
            if (const auto component = std::dynamic_pointer_cast<CVNAudioComponent>(weak.lock()))
                component->showTime(seconds);
        });
}

void CVNAudioComponent::removeAudioObserver() {
    observation_.reset();
}

void CVNAudioComponent::showTime(double seconds) {
    const double duration = audioDuration();
    playerSlider_->setValue(seconds);
    startTime_->setText(formatSecondvalue(wholeSeconds(seconds)));
    endTime_->setText(formatSecondvalue(wholeSeconds(duration)));
    if (duration > 0 && seconds >= duration) returnToStart();
}

// Ready to be played again. The observer stays until the next play or pause, since this may be
// called by it.
void CVNAudioComponent::returnToStart() {
    player_->pause();
    player_->seekToTime(0);
    playerSlider_->setValue(0);
    startTime_->setText(formatSecondvalue(0));
    setPlayPauseButtonIconFor(kPlayIcon);
}

std::string CVNAudioComponent::formatSecondvalue(std::int32_t seconds) {
    static constexpr std::int32_t kHour = 3600;
    static constexpr std::int32_t kDay = 86400;
    const std::int32_t rest = seconds % kHour;
    const std::int32_t minutes = rest / 60;
    std::string text = twoDigits(minutes) + ":" + twoDigits(rest - minutes * 60);
    return seconds >= kDay ? twoDigits(seconds % kDay / kHour) + ":" + text : text;
}

double CVNAudioComponent::audioDuration() {
    const double duration = player_ ? player_->duration() : 0;
    return std::isfinite(duration) ? duration : 0;
}

void CVNAudioComponent::setPlayPauseButtonIconFor(std::string_view name) {
    playPauseButton_->setImage(ui::Image::named(name, platform::current().bundles->library(),
                                                traitCollection().displayScale));
}

}  // namespace tavrolin
