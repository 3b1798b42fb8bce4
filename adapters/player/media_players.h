#pragma once

#include "tavrolin/platform/media_player.h"

namespace tavrolin::platform {
class Dispatch;
}

namespace tavrolin::adapters::player {

/// Sound and film files by GStreamer. The clock is the dispatch port's: GStreamer itself never
/// plays. It opens the file, says how long it is, and gives the picture at a position; sound is
/// opened with it, and goes nowhere.
///
/// GStreamer is loaded when a player is first asked for something that the file alone can tell. Its
/// list of plug-ins is kept where it always is; where the user has no home that can be written to,
/// in a folder of the user's own beside the temporary files.
///
/// Files are taken as hostile: only regular files, nothing that they refer to, no more than 8,192
/// pixels each way, five seconds of real time to open one, three for a picture.
class MediaPlayers final : public platform::MediaPlayers {
public:
    /// The dispatch must outlive the players.
    explicit MediaPlayers(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

    std::unique_ptr<platform::MediaPlayer> playerWithFile(std::string_view path) override;

private:
    platform::Dispatch& dispatch_;
};

}  // namespace tavrolin::adapters::player
