// What a command costs on a device with 1,000 notifications on the tray and 64 requests pending,
// beside the same command on one with 10 and 10. The store and the core SDK's events hold one of
// each for every notification, as after so many pushes. Starts the built command line; what it
// prints goes nowhere. Last the service extension's duplicate pass over the larger tray, as it lies
// on the disk, beside parsing what was read from there.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cstdlib>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "adapters/json/json_text.h"
#include "adapters/memory/memory_platform.h"
#include "adapters/sqlite/sqlite_record_stores.h"
#include "benchmarks/filled_store.h"
#include "benchmarks/ratios.h"
#include "device/attachment_storage.h"
#include "device/content_values.h"
#include "device/core_sdk.h"
#include "device/device_clock.h"
#include "device/device_folder.h"
#include "device/system_notification_center.h"
#include "device/system_state.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/payload/value_transformer.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/notification_service_extension.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace tavrolin;
using namespace tavrolin::benchmarks;
using foundation::Value;

using Words = std::vector<std::string>;

constexpr int kTurns = 15;
constexpr double kGoal = 1.5;
constexpr double kNextYear = 365 * 86'400;

const std::string kProgram = TAVROLIN_BINARY_DIR "/tavrolin";
const std::string kPayloads = TAVROLIN_SOURCE_DIR "/examples/payloads/";
const adapters::json::JSONText reader;

Value push(std::uint64_t number) {
    static const Value example = [] {
        std::ifstream file(kPayloads + "simple.json");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        return *reader.parse(text);
    }();
    Value payload = example;
    Value section = payload["cvnPayload"];
    section.set("trid", trid(number));
    section.set("collapseKey", "key-" + trid(number));
    payload.set("cvnPayload", std::move(section));
    return payload;
}

class FullDevice {
public:
    FullDevice(const std::string& path, std::size_t onTray, std::size_t pending)
        : folder_(path), state_(folder_, stores_) {
        folder_.make();
        run({"app", "permission", "grant"});
        run({"app", "launch"});
        run({"app", "register-categories"});
        run({"app", "background"});
        const std::string group = *folder_.group("group.corvalen.sample") + "/Tavrolin";
        fs::create_directories(group);
        fillStore(group + "/CorvalenPushDB.sqlite", static_cast<int>(onTray), [&](auto number) {
            std::vector<Value> values = row(trid(number));
            values[3] = CVNNotificationPayloadModelValueTransformer::transformedValue(
                *CVNNotificationParser::parseNotificationPayloadDictionary(push(number)));
            values[4] = device::machineTime();
            values[12] = "key-" + trid(number);
            return values;
        });
        for (std::size_t i = 0; i < onTray; ++i) {
            putOnTray(i);
            const Value event = Value::dictionary(
                {{"id", 12},
                 {"type", 3},
                 {"payload",
                  Value::dictionary({{"trid", trid(i)}, {"isAmplified", 0}, {"gwSource", 2}})}});
            state_.addCall({std::string(device::CoreSDK::kEvent), text(event), now()});
        }
        for (std::size_t i = 0; i < pending; ++i) {
            const std::uint64_t number = 10'000 + i;
            state_.addPending(
                {trid(number), {now().secondsSince1970 + kNextYear}, contentText(number)});
        }
    }

    void putOnTray(std::uint64_t number) {
        state_.putOnTray({trid(number), now(), contentText(number)});
    }

    device::SystemState& state() { return state_; }
    const device::DeviceFolder& folder() const { return folder_; }

    void run(const Words& words) const {
        Words all = {kProgram, "--device", folder_.root(), "--time", "jump",
                     "--log",  "9",        "--json"};
        all.insert(all.end(), words.begin(), words.end());
        std::vector<char*> arguments;
        for (std::string& word : all)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions{};
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        pid_t process = -1;
        const int error =
            posix_spawn(&process, kProgram.c_str(), &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        int status = -1;
        if (error != 0 || waitpid(process, &status, 0) != process || status != 0) {
            fail("can't run tavrolin " + words.front());
        }
    }

private:
    static foundation::Date now() { return device::machineTime(); }
    static std::string text(const Value& value) {
        return *reader.serialise(value, platform::JSONText::Style::compact);
    }
    static std::string contentText(std::uint64_t number) {
        return text(device::jsonForm(device::valueOf(device::contentOfPush(push(number)))));
    }

    adapters::sqlite::SQLiteRecordStores stores_;
    device::DeviceFolder folder_;
    device::SystemState state_;
};

// A command, and what has to be done before each time, so that each finds the same.
struct Command {
    std::string name;
    Words words;
    std::function<void(FullDevice&)> prepare;
};

std::vector<Command> commands() {
    constexpr std::uint64_t kOne = 5;  // is on both trays
    const std::string one = trid(kOne);
    const auto nothing = [](FullDevice&) {};
    const auto putBack = [](FullDevice& device) { device.putOnTray(kOne); };
    const auto leave = [](FullDevice& device) { device.run({"app", "background"}); };
    const auto end = [](FullDevice& device) { device.run({"app", "terminate"}); };
    const auto putBackAndLeave = [=](FullDevice& device) {
        putBack(device);
        leave(device);
    };
    std::vector<Command> all;
    for (const char* look :
         {"tray", "pending", "store", "events", "preferences", "categories", "outbox"})
        all.push_back({look, {look}, nothing});
    all.insert(all.end(),
               {{"open", {"open", one}, putBackAndLeave},
                {"action", {"action", one, "1"}, putBackAndLeave},
                {"dismiss", {"dismiss", one}, putBack},
                {"app launch", {"app", "launch"}, end},
                {"app foreground", {"app", "foreground"}, leave},
                {"app badge", {"app", "badge"}, leave},
                {"app token", {"app", "token", "00112233445566778899aabbccddeeff"}, leave},
                {"app silent", {"app", "silent", kPayloads + "silent.json"}, leave},
                {"advance", {"advance", "1s"}, leave},
                {"deliver", {"deliver", "--id", "delivered", kPayloads + "simple.json"}, leave}});
    return all;
}

struct Times {
    std::vector<double> processor;
    std::vector<double> real;

    void add(const Command& command, FullDevice& device) {
        command.prepare(device);
        const double before = microseconds(TimeOf::children);
        const double start = microseconds(TimeOf::real);
        device.run(command.words);
        real.push_back((microseconds(TimeOf::real) - start) / 1e3);
        processor.push_back((microseconds(TimeOf::children) - before) / 1e3);
    }
};

// The ratio is that of the processor's time, of all processes of the command: how long they wait
// for the disk doesn't depend on what lies on the tray.
void measure(const Command& command, FullDevice& few, FullDevice& many) {
    Times withFew;
    Times withMany;
    for (int turn = 0; turn < kTurns; ++turn) {
        withFew.add(command, few);
        withMany.add(command, many);
    }
    std::printf("%s: %.1f ms, in real time %.1f (with 10: %.1f and %.1f)\n", command.name.c_str(),
                median(withMany.processor), median(withMany.real), median(withFew.processor),
                median(withFew.real));
    printRatio("device-1000-to-10 " + command.name,
               medianRatio(withMany.processor, withFew.processor), kGoal);
}

void measureDuplicatePass(FullDevice& device, adapters::memory::MemoryPlatform& memory) {
    adapters::json::JSONText json;
    device::SystemNotificationCenter center(device.state(), memory.dispatch, json,
                                            device::AttachmentStorage(device.folder()), "", {});
    platform::Platform ports = memory.platform();
    ports.notificationCenter = &center;
    platform::install(ports);
    const auto arrived = CVNNotificationParser::parseNotificationPayloadDictionary(push(20'000));
    CVNNotificationServiceExtension extension;
    const std::vector<device::TrayEntry> tray = device.state().tray();
    const auto times =
        timesInTurns(TimeOf::processor, 61, 1,
                     {[&] {
                          for (const device::TrayEntry& entry : tray) {
                              CVNNotificationParser::parseNotificationPayloadDictionary(
                                  (*reader.parse(entry.content))["userInfo"]);
                          }
                      },
                      [&] {
                          extension.removeDuplicateNotificationFromTray(arrived);
                          memory.dispatch.runUntilIdle();
                      }});
    if (device.state().tray().size() != tray.size()) fail("something was a duplicate");
    std::printf("duplicate pass over the device's %zu: %.2f ms (parsing alone %.2f ms)\n",
                tray.size(), median(times[1]) / 1e3, median(times[0]) / 1e3);
    printRatio("device-duplicate-pass-to-parsing", medianRatio(times[1], times[0]), 1.3);
}

}  // namespace

// Given names, those commands alone.
int main(int argc, char** argv) {
    std::string folder = (fs::temp_directory_path() / "device-benchmark-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) fail("no folder");
    const std::vector<std::string> names(argv + 1, argv + argc);
    auto& memory = *new adapters::memory::MemoryPlatform;
    memory.logSink.setEnabled(false);
    platform::install(memory.platform());
    {
        FullDevice few(folder + "/few", 10, 10);
        FullDevice many(folder + "/many", 1'000, 64);
        const auto isNamed = [&](const std::string& name) {
            return names.empty() || std::ranges::count(names, name) > 0;
        };
        for (const Command& command : commands()) {
            if (isNamed(command.name)) measure(command, few, many);
        }
        if (isNamed("duplicates")) measureDuplicatePass(many, memory);
    }
    fs::remove_all(folder);
    return 0;
}
