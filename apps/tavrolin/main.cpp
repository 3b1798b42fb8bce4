// The command line of the device: one command a run, as a person, the push service or the platform
// would act.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/tavrolin/printing.h"
#include "device/app_process.h"
#include "device/core_sdk.h"
#include "device/device.h"
#include "device/device_error.h"
#include "device/service_extension_process.h"

namespace {

using tavrolin::device::Device;
using tavrolin::device::DeviceError;
using tavrolin::device::DeviceOptions;
using tavrolin::foundation::Value;
namespace printing = tavrolin::apps;

constexpr int kDone = 0;
constexpr int kNotDone = 1;
constexpr int kWrongUsage = 2;

// Far above every payload, and far below what would exhaust the machine.
constexpr std::size_t kPiece = std::size_t{64} * 1024;
constexpr double kLongestAdvance = 1e10;  // seconds: more than 300 years
constexpr std::size_t kLargestInput = std::size_t{64} * 1024 * 1024;

struct Arguments {
    std::optional<std::string> device;
    std::string time = "real";
    int logLevel = 4;
    bool json = false;
    std::string file;
    std::string identifier;
    bool lines = false;
    bool noLimit = false;
    bool flushes = false;
    std::string action;
    std::optional<std::string> reply;
    std::optional<std::string> payloadFile;
    std::optional<std::string> normalFile;
    std::optional<std::string> scheduledFile;
    std::string text;
    std::string key;
    bool instant = false;

    DeviceOptions options() const {
        DeviceOptions result;
        result.folder = device ? *device : tavrolin::device::defaultDeviceFolder();
        result.time =
            time == "jump" ? tavrolin::device::TimeMode::jump : tavrolin::device::TimeMode::real;
        result.logLevel = logLevel;
        return result;
    }
    std::optional<std::size_t> limit() const {
        return noLimit ? std::nullopt : std::optional(Device::kLargestPayload);
    }
    std::optional<std::string> id() const {
        return identifier.empty() ? std::nullopt : std::optional(identifier);
    }
};

// Standard input for "-".
class Input {
public:
    explicit Input(const std::string& name) : name_(name) {
        if (name == "-") return;
        file_.open(name, std::ios::binary);
        if (!file_) {
            throw DeviceError("can't read " + name + ": " + std::strerror(errno));
        }
        struct stat status {};
        if (stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
            throw DeviceError("can't read " + name + ": it is a folder");
        }
    }

    std::string all() {
        std::string text;
        std::string piece(kPiece, '\0');
        while (stream().read(piece.data(), static_cast<std::streamsize>(piece.size())),
               stream().gcount() > 0) {
            text.append(piece, 0, static_cast<std::size_t>(stream().gcount()));
            refuseMoreThan(text.size());
        }
        refuseBroken();
        return text;
    }

    // False at the end.
    bool line(std::string& text) {
        text.clear();
        int c = 0;
        while ((c = stream().get()) != std::char_traits<char>::eof()) {
            if (c == '\n') return true;
            text += static_cast<char>(c);
            refuseMoreThan(text.size());
        }
        refuseBroken();
        return !text.empty();
    }

private:
    std::istream& stream() {
        return file_.is_open() ? static_cast<std::istream&>(file_) : std::cin;
    }
    void refuseMoreThan(std::size_t size) const {
        if (size <= kLargestInput) return;
        throw DeviceError(name_ + " has more than " + std::to_string(kLargestInput) +
                          " bytes, which no payload has");
    }
    void refuseBroken() {
        if (stream().bad()) throw DeviceError("can't read " + name_ + " to its end");
    }

    std::string name_;
    std::ifstream file_;
};

Value orEmpty(const Value& payloads) {
    return payloads.isNil() ? Value::array() : payloads;
}

// The number that a hexadecimal digit stands for; nothing for another character.
std::optional<std::uint8_t> digit(char c) {
    if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
    return std::nullopt;
}

std::string hexadecimal(const std::string& text) {
    if (text.size() % 2 != 0) return "a token's bytes are two hexadecimal digits each";
    const bool isHexadecimal =
        std::all_of(text.begin(), text.end(), [](char c) { return digit(c).has_value(); });
    return isHexadecimal ? "" : "a token has hexadecimal digits only";
}

Value bytesOfHex(const std::string& text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(*digit(text[i]) << 4U | *digit(text[i + 1])));
    return Value::data(bytes);
}

// "30s", "5m", "2h", "31d", or several of them joined.
std::optional<double> secondsOf(const std::string& text) {
    static const std::map<char, double> kUnits = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}};
    double seconds = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end) {
        double number = 0;
        const auto [next, error] = std::from_chars(at, end, number, std::chars_format::fixed);
        const auto unit = next < end ? kUnits.find(*next) : kUnits.end();
        if (error != std::errc() || unit == kUnits.end() || !(number >= 0)) return std::nullopt;
        seconds += number * unit->second;
        at = next + 1;
    }
    return text.empty() || !(seconds <= kLongestAdvance) ? std::nullopt : std::optional(seconds);
}

int deliverOne(const Arguments& arguments) {
    const std::string text = Input(arguments.file).all();
    Device device(arguments.options());
    const Value payload = device.parsePayload(text, arguments.limit());
    printing::print(device.deliver(payload, arguments.id()), arguments.json,
                    printing::printDelivery);
    return kDone;
}

int deliverLines(const Arguments& arguments) {
    Input input(arguments.file);
    Device device(arguments.options());
    int status = kDone;
    std::string text;
    for (std::int64_t number = 1; input.line(text); ++number) {
        if (text.find_first_not_of(" \t\r\n") == std::string::npos) continue;
        Value result;
        try {
            const Value payload = device.parsePayload(text, arguments.limit());
            result = device.deliver(payload, arguments.id());
        } catch (const std::exception& error) {
            result = Value::dictionary({{"line", number}, {"error", error.what()}});
            status = kNotDone;
        }
        // A result a line is JSON in either form: what follows it reads lines, not tables.
        printing::printLine(result);
    }
    return status;
}

Value payloadIn(const Device& device, const std::string& file, const Arguments& arguments) {
    return device.parsePayload(Input(file).all(), arguments.limit());
}

// What a silent fetch brings: an array of payloads; nil without a file.
Value payloadsIn(const Device& device, const std::optional<std::string>& file) {
    return file ? device.parsePayloads(Input(*file).all()) : Value();
}

using Act = std::function<Value(Device&)>;

int act(const Arguments& arguments, const Act& act, printing::Printer printer) {
    Device device(arguments.options());
    printing::print(act(device), arguments.json, printer);
    return kDone;
}

using Look = Value (Device::*)();

int look(const Arguments& arguments, Look look) {
    Device device(arguments.options());
    printing::print((device.*look)(), arguments.json, printing::printDictionary);
    return kDone;
}

using List = void (Device::*)(const Device::Take&);

int list(const Arguments& arguments, List list, const printing::Table& table) {
    Device device(arguments.options());
    printing::ListPrinter printer(arguments.json, table);
    (device.*list)([&](std::string_view element) { printer.add(element); });
    printer.end();
    return kDone;
}

// Adds the commands to the command line. Whichever is given sets `command`.
class Commands {
public:
    Commands(Arguments& arguments, std::function<int()>& command)
        : arguments_(arguments), command_(command) {}

    void addTo(CLI::App& app) {
        addUser(app);
        addApp(*app.add_subcommand("app", "act on the app, which is started for it"));
        addDevice(app);
    }

private:
    CLI::App* add(CLI::App& parent, const char* name, const char* help, Act what,
                  printing::Printer printer) {
        CLI::App* added = parent.add_subcommand(name, help);
        added->callback([this, what = std::move(what), printer] {
            command_ = [this, what, printer] { return act(arguments_, what, printer); };
        });
        return added;
    }
    CLI::App* addStep(CLI::App& parent, const char* name, const char* help,
                      std::function<Value()> step) {
        return add(
            parent, name, help,
            [step = std::move(step)](Device& device) { return device.tellApp({step()}); },
            printing::printAppState);
    }
    void addIdentifier(CLI::App* command) {
        command->add_option("ID", arguments_.identifier, "the notification's identifier")
            ->required();
    }

    void addUser(CLI::App& app);
    void addApp(CLI::App& app);
    void addAppPushes(CLI::App& app);
    void addAppDecisions(CLI::App& app);
    void addDevice(CLI::App& app);

    Arguments& arguments_;
    std::function<int()>& command_;
};

void Commands::addUser(CLI::App& app) {
    addIdentifier(add(
        app, "open", "the user opens a notification",
        [this](Device& device) {
            return device.respond(arguments_.identifier,
                                  std::string(tavrolin::platform::kDefaultActionIdentifier), {});
        },
        printing::printAppState));
    CLI::App* action = add(
        app, "action", "the user presses an action of a notification's menu",
        [this](Device& device) {
            return device.respond(arguments_.identifier, arguments_.action, arguments_.reply);
        },
        printing::printAppState);
    addIdentifier(action);
    action->add_option("IDENTIFIER", arguments_.action, "the action's identifier")->required();
    action->add_option("--reply", arguments_.reply, "the text that is typed into it");
    addIdentifier(add(
        app, "dismiss", "the user swipes a notification away",
        [this](Device& device) { return device.dismiss(arguments_.identifier); },
        printing::printRemoved));
    add(
        app, "clear", "the user removes all notifications",
        [](Device& device) { return device.clear(); }, printing::printRemoved);
}

void Commands::addApp(CLI::App& app) {
    using tavrolin::device::AppState;
    using tavrolin::device::step;
    namespace device = tavrolin::device;
    app.require_subcommand(1);
    const auto life = [&](const char* name, const char* help, std::vector<std::string_view> names,
                          std::optional<AppState> state) {
        add(
            app, name, help,
            [names = std::move(names), state](Device& target) {
                std::vector<Value> steps;
                for (const std::string_view each : names)
                    steps.push_back(step(each));
                return target.tellApp(std::move(steps), state);
            },
            printing::printAppState);
    };
    add(
        app, "launch", "start the app",
        [this](Device& target) {
            const auto& file = arguments_.payloadFile;
            return target.launchApp(file ? payloadIn(target, *file, arguments_) : Value());
        },
        printing::printAppState)
        ->add_option("--payload", arguments_.payloadFile,
                     "the push among the launch options, a JSON file");
    life("foreground", "bring it to the front",
         {device::kStepWillEnterForeground, device::kStepDidBecomeActive}, AppState::foreground);
    life("background", "leave it", {device::kStepDidEnterBackground}, AppState::background);
    life("activate", "it becomes active", {device::kStepDidBecomeActive}, AppState::foreground);
    life("terminate", "end it", {device::kStepWillTerminate}, AppState::stopped);
    addAppPushes(app);
    addAppDecisions(app);
}

void Commands::addAppPushes(CLI::App& app) {
    using tavrolin::device::step;
    namespace device = tavrolin::device;
    const auto takeFile = [this](CLI::App* command) {
        command->add_option("FILE", arguments_.file, "a JSON file, or - for standard input")
            ->required();
        command->add_flag("--no-limit", arguments_.noLimit,
                          "take payloads of more than 4,096 bytes");
    };
    takeFile(add(
        app, "silent", "a silent push reaches it",
        [this](Device& target) {
            return target.silentPush(payloadIn(target, arguments_.file, arguments_));
        },
        printing::printFetchResult));
    takeFile(add(
        app, "present", "a push arrives while it is in the foreground",
        [this](Device& target) {
            return target.present(payloadIn(target, arguments_.file, arguments_));
        },
        printing::printDelivery));
    CLI::App* fetch = add(
        app, "fetch", "campaigns from the core SDK's silent fetch",
        [this](Device& target) {
            Value order = step(device::kStepFetch);
            order.set("normal", orEmpty(payloadsIn(target, arguments_.normalFile)));
            order.set("scheduled", orEmpty(payloadsIn(target, arguments_.scheduledFile)));
            return target.tellApp({order});
        },
        printing::printAppState);
    fetch->add_option("--normal", arguments_.normalFile, "normal campaigns: an array of payloads");
    fetch->add_option("--scheduled", arguments_.scheduledFile,
                      "scheduled campaigns: an array of payloads");
}

void Commands::addAppDecisions(CLI::App& app) {
    using tavrolin::device::step;
    namespace device = tavrolin::device;
    addStep(app, "token", "the system gives it a device token",
            [this] {
                Value order = step(device::kStepToken);
                order.set("token", bytesOfHex(arguments_.text));
                return order;
            })
        ->add_option("HEX", arguments_.text, "the token's bytes in hexadecimal")
        ->required()
        ->check(hexadecimal);
    addStep(app, "token-error", "the system can't give it a token",
            [this] {
                Value order = step(device::kStepTokenError);
                order.set("message", arguments_.text);
                return order;
            })
        ->add_option("MESSAGE", arguments_.text, "why")
        ->required();
    static const std::map<std::string, std::int64_t> kStatuses = {
        {"reset", 0}, {"deny", 1}, {"grant", 2}, {"provisional", 3}, {"ephemeral", 4}};
    add(
        app, "permission", "the user decides in the system's settings",
        [this](Device& target) { return target.setPermission(kStatuses.at(arguments_.text)); },
        printing::printDictionary)
        ->add_option("DECISION", arguments_.text, "grant, deny, provisional, ephemeral or reset")
        ->required()
        ->check(CLI::IsMember(kStatuses));
    addStep(app, "request-permission", "it asks the user for permission",
            [] { return step(device::kStepRequestPermission); });
    for (const bool optsIn : {true, false}) {
        addStep(app, optsIn ? "opt-in" : "opt-out",
                optsIn ? "the user opts in" : "the user opts out", [optsIn] {
                    Value order = step(device::kStepOptIn);
                    order.set("value", optsIn);
                    return order;
                });
    }
    add(
        app, "badge", "set the badge to the library's count",
        [](Device& target) { return target.badge(); }, printing::printBadge);
    addStep(app, "register-categories", "register the notification categories",
            [] { return step(device::kStepRegisterCategories); });
    addStep(app, "double-opt-in", "start the double opt-in", [this] {
        Value order = step(device::kStepDoubleOptIn);
        order.set("instant", arguments_.instant);
        return order;
    })->add_flag("--instant", arguments_.instant, "at once, also when it was started before");
    addStep(app, "reset-double-opt-in", "reset the double opt-in",
            [] { return step(device::kStepResetDoubleOptIn); });
}

void Commands::addDevice(CLI::App& app) {
    namespace device = tavrolin::device;
    add(
        app, "advance", "let time pass, and fire what falls due",
        [this](Device& target) { return target.advance(*secondsOf(arguments_.text)); },
        printing::printTime)
        ->add_option("DURATION", arguments_.text, "such as 30s, 5m, 2h or 31d")
        ->required()
        ->check([](const std::string& text) {
            return std::string(secondsOf(text) ? "" : "no duration such as 30s, 5m, 2h or 31d");
        });
    static const std::map<std::string, std::string_view> kAnswers = {
        {"token-needed", device::kSettingTokenNeeded},
        {"permission-needed", device::kSettingPermissionNeeded},
        {"attribution-needed", device::kSettingAttributionNeeded},
        {"user-identity", ""}};
    CLI::App* core = add(
        app, "core", "set what the stand-in core SDK answers",
        [this](Device& target) {
            const std::string_view setting = kAnswers.at(arguments_.key);
            return setting.empty() ? target.setUserIdentity(arguments_.text)
                                   : target.setCoreAnswer(setting, arguments_.text == "true");
        },
        printing::printDictionary);
    core->add_option("KEY", arguments_.key,
                     "token-needed, permission-needed, attribution-needed or user-identity")
        ->required()
        ->check(CLI::IsMember(kAnswers));
    core->add_option("VALUE", arguments_.text, "true or false; of user-identity, a text")
        ->required();
    core->parse_complete_callback([this] {
        if (!kAnswers.at(arguments_.key).empty() && arguments_.text != "true" &&
            arguments_.text != "false") {
            throw CLI::ValidationError("VALUE", "must be true or false");
        }
    });
}

int run(int argc, char** argv) {
    Arguments arguments;
    std::function<int()> command;
    CLI::App app("A phone in a folder: shows what a push notification does, without a phone.",
                 "tavrolin");
    app.set_version_flag("--version", "tavrolin 3.5.7");
    app.add_option("--device", arguments.device,
                   "the device's folder (default: $TAVROLIN_DEVICE, else the user's state folder)")
        ->check([](const std::string& folder) {
            return std::string(folder.empty() ? "the folder's name is empty" : "");
        })
        ->take_last();
    app.add_option("--time", arguments.time,
                   "real: delays take their time; jump: the clock moves to the next timer")
        ->check(CLI::IsMember({"real", "jump"}))
        ->take_last();
    app.add_option("--log", arguments.logLevel,
                   "the log threshold, 0 (all) to 9; lines go to standard error (default 4)")
        ->check(CLI::Range(0, 9))
        ->take_last();
    app.add_flag("--json", arguments.json, "print JSON, for scripts");
    app.require_subcommand(1);
    app.fallthrough();

    CLI::App* deliver = app.add_subcommand("deliver", "hand a payload to the device");
    deliver->add_option("FILE", arguments.file, "a JSON file, or - for standard input")->required();
    CLI::Option* id = deliver->add_option("--id", arguments.identifier, "the request's identifier");
    id->take_last();
    deliver->add_flag("--lines", arguments.lines, "one payload a line, one result a line")
        ->excludes(id);
    deliver->add_flag("--no-limit", arguments.noLimit, "take payloads of more than 4,096 bytes");
    deliver->callback([&] {
        command = [&] { return arguments.lines ? deliverLines(arguments) : deliverOne(arguments); };
    });

    const auto addLook = [&](const char* name, const char* help, std::function<int()> what) {
        CLI::App* added = app.add_subcommand(name, help);
        added->callback([&command, what = std::move(what)] { command = what; });
        return added;
    };
    addLook("tray", "what lies on the tray, oldest first",
            [&] { return list(arguments, &Device::tray, printing::trayTable()); });
    addLook("pending", "the local requests that wait, soonest first",
            [&] { return list(arguments, &Device::pending, printing::pendingTable()); });
    addLook("categories", "the registered categories and their actions",
            [&] { return list(arguments, &Device::categories, printing::categoriesTable()); });
    addLook("store", "the library's stored notifications",
            [&] { return list(arguments, &Device::store, printing::storeTable()); });
    addLook("preferences", "what the app group's preferences hold",
            [&] { return look(arguments, &Device::preferences); });
    addLook("outbox", "what left the app: links, badge, registrations",
            [&] { return look(arguments, &Device::outbox); });
    addLook("events", "the events that the core SDK received", [&] {
        return arguments.flushes ? look(arguments, &Device::flushes)
                                 : list(arguments, &Device::events, printing::eventsTable());
    })->add_flag("--flushes", arguments.flushes, "how often it was asked to send them");
    Commands acting(arguments, command);  // its callbacks use it while the arguments are read
    acting.addTo(app);
    app.add_subcommand("reset", "empty the device")->callback([&] {
        command = [&] {
            Device::reset(arguments.options().folder);
            return kDone;
        };
    });

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool isHelp = error.get_exit_code() == 0;
        app.exit(error);
        return isHelp ? kDone : kWrongUsage;
    }
    return command();
}

}  // namespace

// A closed standard stream's number would go to the next file that is opened, and what is printed
// would be written into that.
static void openStandardStreams() {
    for (int descriptor = open("/dev/null", O_RDWR); descriptor >= 0;
         descriptor = dup(descriptor)) {
        if (descriptor > STDERR_FILENO) {
            close(descriptor);
            return;
        }
    }
}

int main(int argc, char** argv) {
    openStandardStreams();
    // Whatever the device writes is for its owner only.
    umask(0077);
    if (argc == 2 && std::strcmp(argv[1], tavrolin::device::kServiceExtensionProcess) == 0) {
        return tavrolin::device::runServiceExtensionProcess(3);
    }
    if (argc == 2 && std::strcmp(argv[1], tavrolin::device::kAppProcess) == 0) {
        return tavrolin::device::runAppProcess(3);
    }
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tavrolin: %s\n", error.what());
        return kNotDone;
    }
}
