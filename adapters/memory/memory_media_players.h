#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tavrolin/platform/clocked_media_player.h"

namespace tavrolin::adapters::memory {

/// Plays files of which a test says how long they are and how they look; what it doesn't know can't
/// be played. Playing takes the dispatch's time: with its clock advanced by four seconds, four
/// seconds were played. Main thread.
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

    /// Every file that a player was made for, in order.
    const std::vector<std::string>& paths() const { return paths_; }
    /// The player that was made last; null when it is gone.
    platform::MediaPlayer* player() const { return *player_; }

    std::unique_ptr<platform::MediaPlayer> playerWithFile(std::string_view path) override;

private:
    platform::Dispatch& dispatch_;
    std::map<std::string, File, std::less<>> files_;
    std::vector<std::string> paths_;
    std::shared_ptr<platform::MediaPlayer*> player_ =
        std::make_shared<platform::MediaPlayer*>(nullptr);
};

}  // namespace tavrolin::adapters::memory
