// The command line of the device: one command a run, as a person, the push service or the platform
// would act.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>

#include "apps/tavrolin/printing.h"
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

using Look = Value (Device::*)();

int look(const Arguments& arguments, Look look, printing::Printer printer) {
    Device device(arguments.options());
    printing::print((device.*look)(), arguments.json, printer);
    return kDone;
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

    const auto addLook = [&](const char* name, const char* help, Look what,
                             printing::Printer printer) {
        CLI::App* added = app.add_subcommand(name, help);
        added->callback([&, what, printer] {
            command = [&, what, printer] { return look(arguments, what, printer); };
        });
        return added;
    };
    addLook("tray", "what lies on the tray, oldest first", &Device::tray, printing::printTray);
    addLook("store", "the library's stored notifications", &Device::store, printing::printStore);
    addLook("preferences", "what the app group's preferences hold", &Device::preferences,
            printing::printDictionary);
    addLook("outbox", "what left the app: links, badge, registrations", &Device::outbox,
            printing::printDictionary);
    CLI::App* events = app.add_subcommand("events", "the events that the core SDK received");
    events->add_flag("--flushes", arguments.flushes, "how often it was asked to send them");
    events->callback([&] {
        command = [&] {
            return arguments.flushes ? look(arguments, &Device::flushes, printing::printDictionary)
                                     : look(arguments, &Device::events, printing::printEvents);
        };
    });
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
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tavrolin: %s\n", error.what());
        return kNotDone;
    }
}
