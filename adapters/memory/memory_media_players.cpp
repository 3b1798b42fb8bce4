#include "adapters/memory/memory_media_players.h"

#include <cmath>

namespace tavrolin::adapters::memory {

namespace {

using File = MemoryMediaPlayers::File;

class Player final : public platform::ClockedMediaPlayer {
public:
    Player(platform::Dispatch& dispatch, std::optional<File> file,
           std::shared_ptr<platform::MediaPlayer*> latest)
        : ClockedMediaPlayer(dispatch), file_(std::move(file)), latest_(std::move(latest)) {
        *latest_ = this;
    }
    ~Player() override {
        if (*latest_ == this) *latest_ = nullptr;
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    double duration() override { return file_ ? file_->duration : std::nan(""); }
    std::optional<foundation::Error> error() override {
        if (file_) return std::nullopt;
        return foundation::Error{"MediaPlayer", 1, "There is no such file."};
    }
    platform::ImageRef frame(platform::Size) override {
        return file_ && file_->picture ? file_->picture(currentTime()) : nullptr;
    }

private:
    std::optional<File> file_;
    std::shared_ptr<platform::MediaPlayer*> latest_;
};

}  // namespace

std::unique_ptr<platform::MediaPlayer> MemoryMediaPlayers::playerWithFile(std::string_view path) {
    paths_.emplace_back(path);
    const auto found = files_.find(path);
    return std::make_unique<Player>(
        dispatch_, found == files_.end() ? std::nullopt : std::optional(found->second), player_);
}

}  // namespace tavrolin::adapters::memory
