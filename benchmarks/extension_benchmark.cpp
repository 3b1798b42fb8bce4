// What a service-extension process costs: how soon it hands a push back, and how much memory it
// takes. Starts real processes as the device does, and talks to them itself, to see the moment of
// the hand-back.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "adapters/json/json_text.h"
#include "device/channel.h"
#include "device/content_values.h"
#include "device/device_clock.h"
#include "device/device_folder.h"
#include "device/process_messages.h"
#include "device/service_extension_process.h"
#include "tests/support/http_server.h"
#include "tests/support/pictures.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace tavrolin;
using foundation::Value;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kPictures = 10;
constexpr std::size_t kPictureSize = 200'000;
constexpr std::size_t kVideoSize = 50'000'000;
constexpr int kStarts = 41;

const std::string kProgram = TAVROLIN_BINARY_DIR "/tavrolin";
const std::string kBareProcess = TAVROLIN_BINARY_DIR "/benchmarks/bare_process";
const std::string kSimplePayload = TAVROLIN_SOURCE_DIR "/examples/payloads/simple.json";

void require(bool holds, const std::string& what) {
    if (!holds) throw std::runtime_error(what);
}

double secondsSince(steady_clock::time_point start) {
    return std::chrono::duration<double>(steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A program with one end of a socket as its descriptor 3; collected when this goes.
class Started {
public:
    explicit Started(std::vector<std::string> words) {
        std::array<int, 2> ends{};
        require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0, "no socket");
        end_ = ends[0];
        posix_spawn_file_actions_t actions{};
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], 3);
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        const int error =
            posix_spawn(&pid_, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        require(error == 0, "can't start " + words[0]);
    }
    ~Started() { waitpid(pid_, nullptr, 0); }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    int end() const { return end_; }

private:
    int end_ = -1;
    pid_t pid_ = -1;
};

struct Run {
    double seconds = 0;           // from before the start of the process to the hand-back
    double peakMegabytes = 0;     // of the process, over its whole life
    std::size_t attachments = 0;  // of the content that it handed back
};

Run runExtension(const device::DeviceFolder& folder, const Value& payload, bool jumping) {
    const std::string name = device::randomIdentifier();
    Value content = device::valueOf(device::contentOfPush(payload));
    Run run;
    const auto start = steady_clock::now();
    const Started process({kProgram, device::kServiceExtensionProcess});
    device::Channel channel(process.end());
    channel.send(Value::dictionary({{device::kMessageDevice, folder.root()},
                                    {device::kMessageJumping, jumping},
                                    {device::kMessageStart, device::machineTime()},
                                    {device::kMessageLogLevel, 9},
                                    {device::kMessageRun, name},
                                    {device::kMessageIdentifier, name},
                                    {device::kMessageContent, content}}));
    Value message;
    while (channel.receive(message, 60) == device::Channel::Received::message) {
        if (message[device::kMessageContent] && run.seconds == 0) {
            run.seconds = secondsSince(start);
            run.attachments = message[device::kMessageContent]["attachments"].count();
            require(!message[device::kMessageExpired].boolValue(), "the extension's time ran out");
        }
        if (const Value& peak = message[device::kMessagePeakRSS]) {
            run.peakMegabytes = static_cast<double>(peak.integerValue()) * 1024 / 1e6;
        }
    }
    require(run.seconds > 0, "the extension handed nothing back");
    fs::remove_all(folder.temporaryFolder("service-extension", name));
    return run;
}

Value push(const std::string& type, Value section) {
    section.set("type", type);
    section.set("trid", device::randomIdentifier());
    return Value::dictionary(
        {{"aps", Value::dictionary({{"alert", "Hello"}, {"mutable-content", 1}})},
         {"cvnSrc", "Corvalen"},
         {"cvnPayload", section}});
}

Value carousel(const tests::HTTPServer& server) {
    Value elements = Value::array();
    for (int i = 0; i < kPictures; ++i) {
        elements.append(Value::dictionary({{"imgUrl", server.url("/" + std::to_string(i) + ".jpg")},
                                           {"imgTitle", "One of ten"}}));
    }
    return push("CarouselLandscape", Value::dictionary({{"carousel", elements}}));
}

// Serves the ten pictures and returns the size of each.
std::size_t servePictures(tests::HTTPServer& server) {
    const std::string picture = test::jpeg(750, 400, {.bytes = kPictureSize});
    for (int i = 0; i < kPictures; ++i) {
        tests::HTTPReply reply;
        reply.body = picture;
        reply.delay = milliseconds(200);
        server.reply("/" + std::to_string(i) + ".jpg", reply);
    }
    return picture.size();
}

// One download with nothing around it: connect, ask, read to the end.
double bareDownload(const std::string& url, std::size_t size) {
    const std::size_t colon = url.rfind(':');
    const std::size_t slash = url.find('/', colon);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port =
        htons(static_cast<std::uint16_t>(std::stoi(url.substr(colon + 1, slash - colon - 1))));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto start = steady_clock::now();
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0,
            "can't connect to the server");
    const std::string request =
        "GET " + url.substr(slash) + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
    require(send(client, request.data(), request.size(), 0) == static_cast<ssize_t>(request.size()),
            "can't ask the server");
    std::vector<char> piece(1 << 16);
    std::size_t total = 0;
    while (total < size) {
        const ssize_t got = recv(client, piece.data(), piece.size(), 0);
        require(got > 0, "the server hung up");
        total += static_cast<std::size_t>(got);
    }
    close(client);
    return secondsSince(start);
}

void measureCarousel(const device::DeviceFolder& folder) {
    tests::HTTPServer server;
    const std::size_t size = servePictures(server);
    double slowest = 0;
    for (int i = 0; i < kPictures; ++i)
        slowest =
            std::max(slowest, bareDownload(server.url("/" + std::to_string(i) + ".jpg"), size));
    std::vector<double> seconds;
    double peak = 0;
    for (int i = 0; i < 9; ++i) {
        const Run run = runExtension(folder, carousel(server), true);
        seconds.push_back(run.seconds);
        peak = std::max(peak, run.peakMegabytes);
    }
    std::printf(
        "10 pictures of 200 KB, each after 200 ms: %.1f ms (slowest download alone %.1f ms)\n",
        median(seconds) * 1e3, slowest * 1e3);
    std::printf("ratio extension_carousel_time %.3f (goal <= 1.15)\n", median(seconds) / slowest);
    std::printf("ratio extension_carousel_peak_MB %.1f (goal <= 20)\n", peak);
}

void measureTLS(const device::DeviceFolder& folder) {
    if (!tests::HTTPServer::supportsTLS()) return;
    tests::HTTPServer server(tests::HTTPServer::Security::tls);
    servePictures(server);
    tests::HTTPReply video;
    // The first box of an MP4, and what players would take for film.
    video.body = std::string(
        "\0\0\0\x18"
        "ftypmp42\0\0\0\0mp42isom",
        24);
    video.body.resize(kVideoSize, 'v');
    server.reply("/film.mp4", video);
    setenv("SSL_CERT_FILE", server.certificateFile().c_str(), 1);

    std::printf("ratio extension_carousel_tls_peak_MB %.1f (goal <= 24)\n",
                runExtension(folder, carousel(server), true).peakMegabytes);
    const Run film = runExtension(
        folder, push("Video", Value::dictionary({{"mediaUrl", server.url("/film.mp4")}})), true);
    require(film.attachments == 1, "the video was not attached");
    std::printf("50 MB of video over TLS: %.0f ms\n", film.seconds * 1e3);
    std::printf("ratio extension_video_tls_peak_MB %.1f (goal <= 24)\n", film.peakMegabytes);
}

// A copy of the device's store with a table for the bare process to write to.
std::string bareStore(const device::DeviceFolder& folder, const fs::path& group) {
    const std::string copy = folder.root() + "/bare.sqlite";
    sqlite3* store = nullptr;
    require(sqlite3_open((group / "Tavrolin/CorvalenPushDB.sqlite").c_str(), &store) == SQLITE_OK &&
                sqlite3_exec(store, ("VACUUM INTO '" + copy + "'").c_str(), nullptr, nullptr,
                             nullptr) == SQLITE_OK,
            "can't copy the store");
    sqlite3_close(store);
    require(
        sqlite3_open(copy.c_str(), &store) == SQLITE_OK &&
            sqlite3_exec(store,
                         "PRAGMA journal_mode = WAL; CREATE TABLE bare (trid TEXT, payload BLOB);"
                         "CREATE INDEX bareTrid ON bare (trid)",
                         nullptr, nullptr, nullptr) == SQLITE_OK,
        "can't prepare the bare store");
    sqlite3_close(store);
    return copy;
}

double runBare(const std::string& store, const std::string& preferences) {
    const auto start = steady_clock::now();
    const Started process({kBareProcess, store, preferences});
    char byte = 0;
    require(read(process.end(), &byte, 1) == 1, "the bare process failed");
    const double seconds = secondsSince(start);
    close(process.end());
    return seconds;
}

void measureStart(const device::DeviceFolder& folder) {
    std::ifstream file(kSimplePayload);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    Value payload = *adapters::json::JSONText().parse(text);
    const auto next = [&payload] {
        Value section = payload["cvnPayload"];
        section.set("trid", device::randomIdentifier());
        section.set("collapseKey", device::randomIdentifier());
        payload.set("cvnPayload", section);
        return payload;
    };
    runExtension(folder, next(), true);
    const fs::path group = *folder.group("group.corvalen.sample");
    const std::string store = bareStore(folder, group);
    const std::string preferences =
        folder.container("service-extension") + "/Library/Preferences/standard.lmdb";

    std::vector<double> extension;
    std::vector<double> bare;
    for (int i = 0; i < kStarts; ++i) {
        extension.push_back(runExtension(folder, next(), true).seconds);
        bare.push_back(runBare(store, preferences));
    }
    std::printf("no media: start to hand-back %.2f ms (bare process %.2f ms)\n",
                median(extension) * 1e3, median(bare) * 1e3);
    std::printf("ratio extension_start_to_hand_back %.2f (goal <= 1.5)\n",
                median(extension) / median(bare));
}

}  // namespace

int main() {
    std::string path = (fs::temp_directory_path() / "tavrolin-benchmark-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) return EXIT_FAILURE;
    int status = EXIT_SUCCESS;
    try {
        const device::DeviceFolder folder(path + "/device");
        folder.make();
        measureStart(folder);
        measureCarousel(folder);
        measureTLS(folder);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "extension_benchmark: %s\n", error.what());
        status = EXIT_FAILURE;
    }
    fs::remove_all(path);
    return status;
}
