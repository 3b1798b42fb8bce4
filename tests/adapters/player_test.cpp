#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "adapters/asio/asio_dispatch.h"
#include "adapters/memory/memory_dispatch.h"
#include "adapters/memory/memory_media_players.h"
#include "adapters/player/media_players.h"
#include "tests/support/pictures.h"

namespace tavrolin::adapters::player {
namespace {

using memory::MemoryDispatch;
using memory::MemoryMediaPlayers;
using platform::MediaPlayer;
using testing::ElementsAre;

// --- The clock ----------------------------------------------------------------------------------

class PlayerClock : public testing::Test {
protected:
    PlayerClock() {
        players_.setFile("/two", {.duration = 2});
        players_.setFile("/endless", {.duration = std::nan("")});
        player_ = players_.playerWithFile("/two");
        watch();
    }

    void watch() {
        player_->setDidPlayToEnd([this] { heard_.push_back(-1); });
        observation_ = player_->addPeriodicTimeObserver(
            0.5, [this](double seconds) { heard_.push_back(seconds); });
    }
    // What was heard since; -1 is the end.
    std::vector<double> heard() { return std::exchange(heard_, {}); }

    MemoryDispatch dispatch_;
    MemoryMediaPlayers players_{dispatch_};
    std::unique_ptr<MediaPlayer> player_;
    std::unique_ptr<MediaPlayer::Observation> observation_;
    std::vector<double> heard_;
};

TEST_F(PlayerClock, PlaysToTheEndAndStaysThere) {
    player_->play();
    EXPECT_EQ(player_->rate(), 1);
    dispatch_.advance(0.75);
    EXPECT_DOUBLE_EQ(player_->currentTime(), 0.75);
    dispatch_.runUntilIdle();
    EXPECT_THAT(heard(), ElementsAre(0, 0.5, 1, 1.5, 2, -1));
    EXPECT_EQ(player_->rate(), 0);
    player_->play();
    dispatch_.runUntilIdle();
    EXPECT_EQ(player_->currentTime(), 2);
    EXPECT_THAT(heard(), ElementsAre(2, -1)) << "nothing left to play";
    player_->seekToTime(1.5);
    player_->play();
    dispatch_.runUntilIdle();
    EXPECT_THAT(heard(), testing::IsSupersetOf({1.5, 2.0, -1.0}));
}

TEST_F(PlayerClock, PauseAndSeekMakeEarlierTimersVoid) {
    player_->play();
    dispatch_.advance(0.6);
    player_->pause();
    dispatch_.advance(10);
    EXPECT_DOUBLE_EQ(player_->currentTime(), 0.6);
    EXPECT_THAT(heard(), ElementsAre(0, 0.5, testing::DoubleEq(0.6)));

    player_->seekToTime(1);
    player_->play();
    dispatch_.advance(0.3);
    player_->seekToTime(0.2);  // it goes on from there
    EXPECT_EQ(player_->rate(), 1);
    heard();
    dispatch_.runUntilIdle();
    EXPECT_THAT(heard(), ElementsAre(0.2, testing::DoubleEq(0.7), testing::DoubleEq(1.2),
                                     testing::DoubleEq(1.7), 2, -1));

    player_->seekToTime(0);
    player_->play();
    player_->seekToTime(99);  // no playing reached this end
    EXPECT_EQ(player_->rate(), 0);
    dispatch_.runUntilIdle();
    EXPECT_THAT(heard(), testing::Not(testing::Contains(-1)));
}

TEST_F(PlayerClock, KeepsToTheFile) {
    const std::pair<double, double> cases[] = {
        {-5, 0}, {std::nan(""), 0}, {1.25, 1.25}, {std::numeric_limits<double>::infinity(), 2}};
    for (const auto& [asked, reached] : cases) {
        player_->seekToTime(asked);
        EXPECT_EQ(player_->currentTime(), reached) << asked;
    }
    player_ = players_.playerWithFile("/endless");
    watch();
    player_->play();
    dispatch_.advance(100'000);
    EXPECT_EQ(player_->rate(), 1);
    EXPECT_DOUBLE_EQ(player_->currentTime(), 100'000);
    EXPECT_THAT(heard(), testing::Not(testing::Contains(-1)));
    player_ = players_.playerWithFile("/missing");
    player_->play();
    EXPECT_EQ(player_->rate(), 0);
    EXPECT_TRUE(player_->error());
}

TEST_F(PlayerClock, CallsNobodyAfterItsEnd) {
    player_->play();
    observation_.reset();
    dispatch_.advance(1);
    EXPECT_THAT(heard(), ElementsAre());
    // A block may end the player that calls it.
    player_->setDidPlayToEnd([this] { heard_.push_back(-1), player_.reset(); });
    const auto other = player_->addPeriodicTimeObserver(0.3, [this](double) {
        if (heard_.empty()) player_.reset();
    });
    dispatch_.runUntilIdle();
    EXPECT_EQ(player_, nullptr);
    EXPECT_THAT(heard(), ElementsAre());
}

TEST_F(PlayerClock, MayBeTheRealOne) {
    asio::AsioDispatch dispatch(asio::Clock::real());
    MemoryMediaPlayers players(dispatch);
    players.setFile("/short", {.duration = 0.05});
    const auto player = players.playerWithFile("/short");
    player->setDidPlayToEnd([this] { heard_.push_back(-1); });
    player->play();
    EXPECT_LT(player->currentTime(), 0.05);
    dispatch.runMainUntilIdle();
    EXPECT_THAT(heard(), ElementsAre(-1));
    EXPECT_EQ(player->currentTime(), 0.05);
}

// --- Files --------------------------------------------------------------------------------------

class PlayerFiles : public testing::Test {
protected:
    PlayerFiles() {
        char name[] = "/tmp/playerXXXXXX";
        folder_ = ::mkdtemp(name);
    }
    ~PlayerFiles() override { std::filesystem::remove_all(folder_); }

    static std::string example(const char* name) {
        return TAVROLIN_SOURCE_DIR "/examples/media/" + std::string(name);
    }
    static std::string contents(const char* name) {
        std::ifstream file(example(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::unique_ptr<MediaPlayer> playerOf(const std::string& name, const std::string& bytes) {
        std::ofstream(folder_ + "/" + name, std::ios::binary) << bytes;
        return players_.playerWithFile(folder_ + "/" + name);
    }

    MemoryDispatch dispatch_;
    MediaPlayers players_{dispatch_};
    std::string folder_;
};

std::string little(std::uint32_t number) {
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(number >> shift & 0xFFU);
    return bytes;
}

TEST_F(PlayerFiles, SayHowLongTheyAre) {
    const auto sound = players_.playerWithFile(example("chime.wav"));
    EXPECT_FALSE(sound->error());
    EXPECT_DOUBLE_EQ(sound->duration(), 1.5);
    EXPECT_EQ(sound->frame({100, 100}), nullptr);
    const auto film = players_.playerWithFile(example("clip.avi"));
    EXPECT_FALSE(film->error());
    EXPECT_DOUBLE_EQ(film->duration(), 2);
}

TEST_F(PlayerFiles, ShowThePictureOfTheMoment) {
    const auto film = players_.playerWithFile(example("clip.avi"));
    struct Case {
        platform::Size maximum;
        std::pair<unsigned, unsigned> size;
    };
    const Case cases[] = {
        {{160, 160}, {160, 90}}, {{160, 45}, {80, 45}}, {{2000, 2000}, {320, 180}}};
    for (const Case& c : cases) {
        const auto frame = film->frame(c.maximum);
        ASSERT_NE(frame, nullptr);
        EXPECT_EQ(std::pair(frame->width, frame->height), c.size);
        EXPECT_EQ(frame->pixels.size(), std::size_t{frame->width} * frame->height * 4);
    }
    EXPECT_EQ(film->frame({0, 100}), nullptr);

    std::vector<std::vector<std::uint8_t>> seen;
    for (const double moment : {0.0, 0.95, 1.95, 2.0, 0.0}) {
        film->seekToTime(moment);
        const auto frame = film->frame({64, 64});
        ASSERT_NE(frame, nullptr) << moment;
        seen.push_back(frame->pixels);
    }
    EXPECT_NE(seen[0], seen[1]);
    EXPECT_NE(seen[1], seen[2]);
    EXPECT_EQ(seen[2], seen[3]) << "at the end the last picture stays";
    EXPECT_EQ(seen[0], seen[4]) << "the same moment is the same picture again";
}

TEST_F(PlayerFiles, ThatAreNoneEndInAnError) {
    const std::string film = contents("clip.avi");
    std::string claiming = film;  // 60,000 by 60,000, as the file has it
    claiming.replace(film.find("avih") + 8 + 32, 8, little(60'000) + little(60'000));
    claiming.replace(film.find("strf") + 8 + 4, 8, little(60'000) + little(60'000));
    std::string pretending = film;  // the same, as only its pictures have it
    const std::string frameHeader("\xFF\xC0\x00\x11\x08", 5);
    for (std::size_t at = 0; (at = pretending.find(frameHeader, at)) != std::string::npos; ++at)
        pretending.replace(at + 5, 4, "\xEA\x60\xEA\x60");
    const std::pair<const char*, std::string> cases[] = {
        {"empty.mp4", ""},
        {"text.mp4", std::string(2000, 'a') + "\n"},
        {"list.mp4", "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\nhttp://127.0.0.1:9/a.ts\n"},
        {"picture.mp4", test::jpeg(32, 32)},
        {"animation.mp4", test::gif(2, 2, {test::plainFrame(2, 2, 'r', 10)})},
        {"header.avi", film.substr(0, 300)},
        {"claiming.avi", claiming},
        {"pretending.avi", pretending},
    };
    for (const auto& [name, bytes] : cases) {
        const auto player = playerOf(name, bytes);
        player->play();
        ASSERT_TRUE(player->error()) << name;
        EXPECT_FALSE(player->error()->localizedDescription.empty()) << name;
        EXPECT_TRUE(std::isnan(player->duration())) << name;
        EXPECT_EQ(player->frame({100, 100}), nullptr) << name;
        EXPECT_EQ(player->rate(), 0) << name;
    }
    ASSERT_EQ(::mkfifo((folder_ + "/fifo").c_str(), S_IRUSR | S_IWUSR), 0);
    for (const std::string& path : {folder_ + "/missing", folder_, folder_ + "/fifo",
                                    std::string("/dev/zero"), std::string()}) {
        EXPECT_TRUE(players_.playerWithFile(path)->error()) << path;
    }
}

TEST_F(PlayerFiles, ThatAreCutShortPlayAsFarAsTheyGo) {
    const std::string film = contents("clip.avi");
    const auto player = playerOf("cut.avi", film.substr(0, film.size() / 3));
    EXPECT_FALSE(player->error());
    EXPECT_GT(player->duration(), 0);
    EXPECT_LT(player->duration(), 2);
    EXPECT_NE(player->frame({64, 64}), nullptr);
    player->play();
    dispatch_.runUntilIdle();
    EXPECT_EQ(player->currentTime(), player->duration());
}

TEST_F(PlayerFiles, AreNotOpenedBeforeTheyAreAskedForSomething) {
    const auto player = players_.playerWithFile(folder_ + "/later.wav");
    player->seekToTime(0);
    EXPECT_EQ(player->rate(), 0);
    EXPECT_EQ(player->currentTime(), 0);
    std::ofstream(folder_ + "/later.wav", std::ios::binary) << contents("chime.wav");
    EXPECT_FALSE(player->error());
}

}  // namespace
}  // namespace tavrolin::adapters::player
