#pragma once

#include <functional>
#include <map>
#include <string>

#include "tavrolin/platform/clocked_media_player.h"

namespace tavrolin::adapters::memory {

/// Plays files of which a test says how long they are and how they look; what it doesn't know can't
/// be played. Main thread.
class MemoryMediaPlayers final : public platform::MediaPlayers {
public:
    struct File {
        double duration = 0;  // not a number: without an end
        std::function<platform::ImageRef(double seconds)> picture = nullptr;
    };

    /// The dispatch must outlive the players.
    explicit MemoryMediaPlayers(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

    /// Holds for players that are made later.
    void setFile(const std::string& path, File file) { files_[path] = std::move(file); }

    std::unique_ptr<platform::MediaPlayer> playerWithFile(std::string_view path) override;

private:
    platform::Dispatch& dispatch_;
    std::map<std::string, File, std::less<>> files_;
};

}  // namespace tavrolin::adapters::memory
