#include "adapters/player/media_players.h"

#include <cmath>
#include <string>

#include "adapters/player/film.h"
#include "tavrolin/platform/clocked_media_player.h"

namespace tavrolin::adapters::player {

namespace {

class Player final : public platform::ClockedMediaPlayer {
public:
    Player(platform::Dispatch& dispatch, std::string_view path)
        : ClockedMediaPlayer(dispatch), path_(path) {}

    double duration() override { return film() ? film()->duration() : std::nan(""); }

    std::optional<foundation::Error> error() override {
        if (film()) return std::nullopt;
        return film_->error();
    }

    platform::ImageRef frame(platform::Size maximumPixels) override {
        return film() ? film()->frame(currentTime(), maximumPixels) : nullptr;
    }

private:
    // Null when it can't be opened.
    Film* film() {
        if (!film_) film_ = Film::open(path_);
        return *film_ ? (**film_).get() : nullptr;
    }

    std::string path_;
    std::optional<foundation::Expected<std::unique_ptr<Film>>> film_;
};

}  // namespace

std::unique_ptr<platform::MediaPlayer> MediaPlayers::playerWithFile(std::string_view path) {
    return std::make_unique<Player>(dispatch_, path);
}

}  // namespace tavrolin::adapters::player
