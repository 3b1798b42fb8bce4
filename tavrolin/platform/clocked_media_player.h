#pragma once

#include <memory>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/media_player.h"

namespace tavrolin::platform {

/// All of a player but its file: position, rate, end and observers, kept by the dispatch port's
/// clock. An adapter adds what the file says.
class ClockedMediaPlayer : public MediaPlayer {
public:
    /// The dispatch must outlive the player.
    explicit ClockedMediaPlayer(Dispatch& dispatch);
    ~ClockedMediaPlayer() override;
    ClockedMediaPlayer(const ClockedMediaPlayer&) = delete;
    ClockedMediaPlayer& operator=(const ClockedMediaPlayer&) = delete;

    double currentTime() final;
    double rate() final;
    void play() final;
    void pause() final;
    void seekToTime(double seconds) final;
    void setDidPlayToEnd(std::function<void()> block) final;
    /// An interval is at least a hundredth of a second.
    std::unique_ptr<Observation> addPeriodicTimeObserver(
        double interval, std::function<void(double seconds)> block) final;

private:
    struct State;
    class Registration;

    std::shared_ptr<State> state_;  // the blocks under way look at it weakly
};

}  // namespace tavrolin::platform
