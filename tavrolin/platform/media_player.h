#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "tavrolin/foundation/error.h"
#include "tavrolin/platform/geometry.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::platform {

/// Plays one file. Its time runs on the clock of the dispatch port, so it stands still when that
/// does. Main thread; blocks are called on the main queue. Ends with its destruction; no block is
/// called after that.
class MediaPlayer {
public:
    /// A registration; ends with its destruction.
    class Observation {
    public:
        virtual ~Observation() = default;
    };

    virtual ~MediaPlayer() = default;

    /// In seconds; not a number when the file does not say.
    virtual double duration() = 0;
    virtual double currentTime() = 0;
    /// 1 while it plays, 0 otherwise: paused, at the end, or stopped by an error.
    virtual double rate() = 0;
    /// Why it can't be played; none while it can. Known once something was asked of it.
    virtual std::optional<foundation::Error> error() = 0;

    /// From the present position. At the end it stays there, and soon has reached the end again.
    virtual void play() = 0;
    virtual void pause() = 0;
    /// To within the file: beyond its ends the nearest one; not a number is the start. It goes on
    /// playing if it was.
    virtual void seekToTime(double seconds) = 0;

    /// Called when playing has reached the end, not when a seek has. One at a time.
    virtual void setDidPlayToEnd(std::function<void()> block) = 0;
    /// Called every `interval` seconds of playing, with the current time, and when play, pause or a
    /// seek changes it.
    virtual std::unique_ptr<Observation> addPeriodicTimeObserver(
        double interval, std::function<void(double seconds)> block) = 0;

    /// The picture at the current time, no larger than asked for where the file is larger; null
    /// when there is none (sound only, an error).
    virtual ImageRef frame(Size maximumPixels) = 0;
};

class MediaPlayers {
public:
    virtual ~MediaPlayers() = default;

    /// Never null; what can't be played says so by its error. Nothing is opened, and no player
    /// library started, before something is asked of it.
    virtual std::unique_ptr<MediaPlayer> playerWithFile(std::string_view path) = 0;
};

}  // namespace tavrolin::platform
