#include "apps/tavrolin/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "device/app_process.h"
#include "device/core_sdk.h"

namespace tavrolin::apps {

using device::AppState;
using device::Device;
using device::step;
using foundation::Value;

namespace {

// What a silent fetch brings: an array of payloads, without a file an empty one.
Value payloadsIn(const Device& device, const std::optional<std::string>& file) {
    return file ? device.parsePayloads(Input(*file).all()) : Value::array();
}

// However they are written.
bool isSameFile(const std::string& one, const std::string& other) {
    std::error_code error;
    const auto target = [&error](const std::string& name) {
        return std::filesystem::weakly_canonical(std::filesystem::absolute(name, error), error);
    };
    return target(one) == target(other);
}

using Look = Value (Device::*)();

int look(const Arguments& arguments, Look look, Printer printer) {
    Device device(arguments.options());
    print((device.*look)(), arguments.json, printer);
    return kDone;
}

using List = void (Device::*)(const Device::Take&);

int list(const Arguments& arguments, List list, const Table& table) {
    Device device(arguments.options());
    ListPrinter printer(arguments.json, table);
    (device.*list)([&](std::string_view element) { printer.add(element); });
    printer.end();
    return kDone;
}

}  // namespace

void Commands::addTo(CLI::App& app) {
    addOptions(app);
    addPushes(app);
    addLooking(app);
    addUser(app);
    addExpand(app);
    addApp(app);
    addDevice(app);
}

CLI::App* Commands::add(CLI::App& parent, const char* name, const char* help,
                        std::function<int()> what) {
    CLI::App* added = parent.add_subcommand(name, help);
    added->callback([this, what = std::move(what)] { command_ = what; });
    return added;
}

CLI::App* Commands::addAct(CLI::App& parent, const char* name, const char* help, Act what,
                           Printer printer) {
    return add(parent, name, help, [this, what = std::move(what), printer] {
        Device device(arguments_.options());
        print(what(device), arguments_.json, printer);
        return kDone;
    });
}

CLI::App* Commands::addStep(CLI::App& parent, const char* name, const char* help,
                            std::function<Value()> step) {
    return addAct(
        parent, name, help,
        [step = std::move(step)](Device& device) { return device.tellApp({step()}); },
        printAppState);
}

void Commands::addIdentifier(CLI::App* command) {
    command->add_option("ID", arguments_.identifier, "the notification's identifier")
        ->required()
        ->check(utf8);
}

void Commands::addFile(CLI::App* command) {
    command->add_option("FILE", arguments_.file, "a JSON file, or - for standard input")
        ->required();
    command->add_flag("--no-limit", arguments_.noLimit, "take payloads of more than 4,096 bytes");
}

void Commands::addOptions(CLI::App& app) {
    app.add_option("--device", arguments_.device,
                   "the device's folder (default: $TAVROLIN_DEVICE, else the user's state folder)")
        ->check(notEmpty)
        ->take_last();
    app.add_option("--time", arguments_.time,
                   "real: delays take their time; jump: the clock moves to the next timer")
        ->check(CLI::IsMember({"real", "jump"}))
        ->take_last();
    app.add_option("--now", arguments_.now,
                   "set the device's clock to this moment (UTC) first, such as 2026-11-24T08:00:00")
        ->check(moment)
        ->take_last();
    app.add_option("--log", arguments_.logLevel,
                   "the log threshold, 0 (all) to 9; lines go to standard error (default 4)")
        ->check(CLI::Range(0, 9))
        ->take_last();
    app.add_flag("--json", arguments_.json, "print JSON, for scripts");
}

// --- Pushes ----------------------------------------------------------------------------------

void Commands::addPushes(CLI::App& app) {
    CLI::App* deliver = add(app, "deliver", "hand a payload to the device",
                            [this] { return arguments_.lines ? deliverLines() : deliverOne(); });
    addFile(deliver);
    CLI::Option* id =
        deliver->add_option("--id", arguments_.identifier, "the request's identifier");
    id->take_last()->check(utf8);
    deliver->add_flag("--lines", arguments_.lines, "one payload a line, one result a line")
        ->excludes(id);
}

Value Commands::payloadIn(const Device& device, const std::string& file) const {
    return device.parsePayload(Input(file).all(), arguments_.limit());
}

int Commands::deliverOne() {
    const std::string text = Input(arguments_.file).all();
    Device device(arguments_.options());
    const Value payload = device.parsePayload(text, arguments_.limit());
    print(device.deliver(payload, arguments_.id()), arguments_.json, printDelivery);
    return kDone;
}

int Commands::deliverLines() {
    Input input(arguments_.file);
    Device device(arguments_.options());
    int status = kDone;
    std::string text;
    for (std::int64_t number = 1; input.line(text); ++number) {
        if (text.find_first_not_of(" \t\r\n") == std::string::npos) continue;
        Value result;
        try {
            const Value payload = device.parsePayload(text, arguments_.limit());
            result = device.deliver(payload, arguments_.id());
        } catch (const std::exception& error) {
            result = Value::dictionary({{"line", number}, {"error", error.what()}});
            status = kNotDone;
        }
        // A result a line is JSON in either form: what follows it reads lines, not tables.
        printLine(result);
    }
    return status;
}

// --- Looking ---------------------------------------------------------------------------------

void Commands::addLooking(CLI::App& app) {
    add(app, "tray", "what lies on the tray, oldest first",
        [this] { return list(arguments_, &Device::tray, trayTable()); });
    add(app, "pending", "the local requests that wait, soonest first",
        [this] { return list(arguments_, &Device::pending, pendingTable()); });
    add(app, "categories", "the registered categories and their actions",
        [this] { return list(arguments_, &Device::categories, categoriesTable()); });
    add(app, "store", "the library's stored notifications",
        [this] { return list(arguments_, &Device::store, storeTable()); });
    add(app, "preferences", "what the app group's preferences hold",
        [this] { return look(arguments_, &Device::preferences, printDictionary); });
    add(app, "outbox", "what left the app: links, badge, registrations",
        [this] { return look(arguments_, &Device::outbox, printDictionary); });
    add(app, "events", "the events that the core SDK received", [this] {
        return arguments_.flushes ? look(arguments_, &Device::flushes, printDictionary)
                                  : list(arguments_, &Device::events, eventsTable());
    })->add_flag("--flushes", arguments_.flushes, "how often it was asked to send them");
}

// --- The user --------------------------------------------------------------------------------

void Commands::addUser(CLI::App& app) {
    addIdentifier(addAct(
        app, "open", "the user opens a notification",
        [this](Device& device) {
            return device.respond(arguments_.identifier,
                                  std::string(platform::kDefaultActionIdentifier), {});
        },
        printAppState));
    CLI::App* action = addAct(
        app, "action", "the user presses an action of a notification's menu",
        [this](Device& device) {
            return device.respond(arguments_.identifier, arguments_.action, arguments_.reply);
        },
        printAppState);
    addIdentifier(action);
    action->add_option("IDENTIFIER", arguments_.action, "the action's identifier")
        ->required()
        ->check(utf8);
    action->add_option("--reply", arguments_.reply, "the text that is typed into it")->check(utf8);
    addIdentifier(addAct(
        app, "dismiss", "the user swipes a notification away",
        [this](Device& device) { return device.dismiss(arguments_.identifier); }, printRemoved));
    addAct(
        app, "clear", "the user removes all notifications",
        [](Device& device) { return device.clear(); }, printRemoved);
}

// --- The expanded view -----------------------------------------------------------------------

void Commands::addExpand(CLI::App& app) {
    device::ExpandOrder& order = arguments_.expansion;
    CLI::App* expand =
        add(app, "expand", "the user expands a notification", [this] { return this->expand(); });
    addIdentifier(expand);
    expand->add_option("--width", order.width, "the view's width in points (default 375)")
        ->check(viewWidth)
        ->take_last();
    expand->add_option("--scale", order.scale, "pixels for a point (default 2)")
        ->check(viewScale)
        ->take_last();
    expand->add_flag("--dark", order.isDark, "in the dark appearance");
    expand->add_flag("--card", order.isCard, "draw what a phone shows around the view as well");
    expand
        ->add_option("--do", arguments_.steps,
                     "a step: tap X,Y; tap-on NAME; press IDENTIFIER; reply IDENTIFIER TEXT; wait "
                     "SECONDS; disappear. May be given again and again")
        ->check(expandStep)
        ->allow_extra_args(false);
    const auto addPicture = [expand](const char* name, auto& file, const char* help) {
        expand->add_option(name, file, help)->check(pictureFile)->take_last();
    };
    addPicture("--png", order.png, "draw it into this file, as pixels");
    addPicture("--svg", order.svg, "draw it into this file, as shapes");
    addPicture("--card-png", order.cardPNG,
               "draw what a phone shows around it as well into this file, as pixels");
    expand->add_flag("--tree", order.wantsTree, "print the view's tree");
    expand->parse_complete_callback([&order] {
        const std::vector<std::string> files = order.pictures();
        for (auto file = files.begin(); file != files.end(); ++file) {
            const auto isIt = [&](const std::string& other) { return isSameFile(*file, other); };
            if (std::any_of(files.begin(), file, isIt))
                throw CLI::ValidationError(*file, "each picture must be a file of its own");
        }
    });
}

int Commands::expand() {
    device::DeviceOptions options = arguments_.options();
    options.expands = true;
    Device device(options);
    const Value result = device.expand(arguments_.expandOrder());
    if (arguments_.json) {
        print(result["view"], true, nullptr);
    } else {
        print(result, false, printExpansion);
        for (const std::string& file : arguments_.expansion.pictures())
            printDone("  picture      " + harmless(file));
    }
    return kDone;
}

// --- The app ---------------------------------------------------------------------------------

void Commands::addApp(CLI::App& app) {
    CLI::App& commands = *app.add_subcommand("app", "act on the app, which is started for it");
    commands.require_subcommand(0, 1);
    addAppLife(commands);
    addAppPushes(commands);
    addAppDecisions(commands);
}

void Commands::addAppLife(CLI::App& app) {
    const auto add = [&](const char* name, const char* help, std::vector<std::string_view> names,
                         AppState state) {
        addAct(
            app, name, help,
            [names = std::move(names), state](Device& target) {
                std::vector<Value> steps;
                for (const std::string_view each : names)
                    steps.push_back(step(each));
                return target.tellApp(std::move(steps), state);
            },
            printAppState);
    };
    addAct(
        app, "launch", "start the app",
        [this](Device& target) {
            const auto& file = arguments_.payloadFile;
            return target.launchApp(file ? payloadIn(target, *file) : Value());
        },
        printAppState)
        ->add_option("--payload", arguments_.payloadFile,
                     "the push among the launch options, a JSON file");
    add("foreground", "bring it to the front",
        {device::kStepWillEnterForeground, device::kStepDidBecomeActive}, AppState::foreground);
    add("background", "leave it", {device::kStepDidEnterBackground}, AppState::background);
    add("activate", "it becomes active", {device::kStepDidBecomeActive}, AppState::foreground);
    add("terminate", "end it", {device::kStepWillTerminate}, AppState::stopped);
}

void Commands::addAppPushes(CLI::App& app) {
    addFile(addAct(
        app, "silent", "a silent push reaches it",
        [this](Device& target) { return target.silentPush(payloadIn(target, arguments_.file)); },
        printFetchResult));
    addFile(addAct(
        app, "present", "a push arrives while it is in the foreground",
        [this](Device& target) { return target.present(payloadIn(target, arguments_.file)); },
        printDelivery));
    CLI::App* fetch = addAct(
        app, "fetch", "campaigns from the core SDK's silent fetch",
        [this](Device& target) {
            return target.fetch(payloadsIn(target, arguments_.normalFile),
                                payloadsIn(target, arguments_.scheduledFile));
        },
        printFetch);
    fetch->add_option("--normal", arguments_.normalFile, "normal campaigns: an array of payloads");
    fetch->add_option("--scheduled", arguments_.scheduledFile,
                      "scheduled campaigns: an array of payloads");
}

void Commands::addAppDecisions(CLI::App& app) {
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
        ->required()
        ->check(utf8);
    static const std::map<std::string, std::int64_t> kStatuses = {
        {"reset", 0}, {"deny", 1}, {"grant", 2}, {"provisional", 3}, {"ephemeral", 4}};
    addAct(
        app, "permission", "the user decides in the system's settings",
        [this](Device& target) { return target.setPermission(kStatuses.at(arguments_.text)); },
        printPermission)
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
    addAct(
        app, "badge", "set the badge to the library's count",
        [](Device& target) { return target.badge(); }, printBadge);
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

// --- The device ------------------------------------------------------------------------------

void Commands::addDevice(CLI::App& app) {
    addAct(
        app, "advance", "let time pass, and fire what falls due",
        [this](Device& target) { return target.advance(*secondsOf(arguments_.text)); }, printTime)
        ->add_option("DURATION", arguments_.text, "such as 30s, 5m, 2h or 31d")
        ->required()
        ->check(duration);
    static const std::map<std::string, std::string_view> kAnswers = {
        {"token-needed", device::kSettingTokenNeeded},
        {"permission-needed", device::kSettingPermissionNeeded},
        {"attribution-needed", device::kSettingAttributionNeeded},
        {"user-identity", ""}};
    CLI::App* core = addAct(
        app, "core", "set what the stand-in core SDK answers",
        [this](Device& target) {
            const std::string_view setting = kAnswers.at(arguments_.key);
            return setting.empty() ? target.setUserIdentity(arguments_.text)
                                   : target.setCoreAnswer(setting, arguments_.text == "true");
        },
        printDictionary);
    core->add_option("KEY", arguments_.key,
                     "token-needed, permission-needed, attribution-needed or user-identity")
        ->required()
        ->check(CLI::IsMember(kAnswers));
    core->add_option("VALUE", arguments_.text, "true or false; of user-identity, a text")
        ->required()
        ->check(utf8);
    core->parse_complete_callback([this] {
        if (!kAnswers.at(arguments_.key).empty() && arguments_.text != "true" &&
            arguments_.text != "false") {
            throw CLI::ValidationError("VALUE", "must be true or false");
        }
    });
    add(app, "reset", "empty the device", [this] {
        Device::reset(arguments_.options().folder);
        if (!arguments_.json) printDone("The device is empty.");
        return kDone;
    });
}

}  // namespace tavrolin::apps
