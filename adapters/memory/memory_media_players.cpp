#include "adapters/memory/memory_media_players.h"

#include <cmath>

namespace tavrolin::adapters::memory {

namespace {

using File = MemoryMediaPlayers::File;

class Player final : public platform::ClockedMediaPlayer {
public:
    Player(platform::Dispatch& dispatch, std::optional<File> file)
        : ClockedMediaPlayer(dispatch), file_(std::move(file)) {}

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
};

}  // namespace

std::unique_ptr<platform::MediaPlayer> MemoryMediaPlayers::playerWithFile(std::string_view path) {
    const auto found = files_.find(path);
    return std::make_unique<Player>(
        dispatch_, found == files_.end() ? std::nullopt : std::optional(found->second));
}

}  // namespace tavrolin::adapters::memory
