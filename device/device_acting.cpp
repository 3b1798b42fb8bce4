// What the user, the push service and the platform do with the device.

#include <algorithm>
#include <utility>

#include "device/app_process.h"
#include "device/content_values.h"
#include "device/device.h"
#include "device/device_error.h"
#include "device/file_lock.h"
#include "device/process_platform.h"
#include "device/system_notification_center.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/preference_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/platform/preferences_suite.h"

namespace tavrolin::device {

using foundation::Date;
using foundation::Value;

void Device::failWithout(const std::string& identifier) {
    throw DeviceError("there is no notification " + identifier +
                      " on the tray (`tavrolin tray` shows what is)");
}

ProcessStart Device::processStart() const {
    return {.executable = options_.executable,
            .folder = folder_.root(),
            .time = options_.time,
            .start = {},
            .logLevel = options_.logLevel,
            .run = {}};
}

// --- The user ---------------------------------------------------------------------------------

Value Device::respond(const std::string& identifier, const std::string& actionIdentifier,
                      const std::optional<std::string>& userText) {
    SystemState& state = platform_->systemState();
    if (!state.queueResponse(identifier, actionIdentifier, userText)) failWithout(identifier);
    const AppRun run = runApp({.comesForward = true});
    return Value::dictionary({{"app", name(run.state)}});
}

Value Device::removed(const std::vector<TrayEntry>& entries) {
    Value identifiers = Value::array();
    for (const TrayEntry& entry : entries) {
        storage_.remove(readJSON(entry.content));
        identifiers.append(entry.identifier);
    }
    return Value::dictionary({{"removed", identifiers}});
}

Value Device::dismiss(const std::string& identifier) {
    const auto entries = platform_->systemState().removeFromTray({identifier});
    if (entries.empty()) failWithout(identifier);
    return removed(entries);
}

Value Device::clear() {
    return removed(platform_->systemState().clearTray());
}

// --- The app ----------------------------------------------------------------------------------

AppRun Device::runAppAlone(AppOrder order) {
    platform_->appGroup();  // an app whose Info dictionary can't be read can't be started
    SystemState& state = platform_->systemState();
    const std::vector<QueuedResponse> queued = state.responses();
    // The files of a notification that the app took are needed no longer: what the app shows again
    // has taken them over.
    const auto removeFiles = [&] {
        if (queued.empty()) return;
        const std::vector<QueuedResponse> left = state.responses();
        for (const QueuedResponse& each : queued) {
            const bool isLeft = std::any_of(left.begin(), left.end(), [&](const auto& other) {
                return other.number == each.number;
            });
            if (!isLeft) storage_.remove(readJSON(each.notification.content));
        }
    };
    try {
        AppRun run = AppLauncher(folder_, clock_, state, processStart()).run(std::move(order));
        removeFiles();
        return run;
    } catch (const DeviceError&) {
        run_->leave();  // what it had taken over and not handed in lies somewhere
        removeFiles();
        throw;
    }
}

AppRun Device::runApp(AppOrder order) {
    AppRun run = runAppAlone(std::move(order));
    fireUntil(clock_.now());
    return run;
}

Value Device::launchApp(const Value& payload) {
    const AppState before = appStateOf(platform_->systemState());
    if (before != AppState::stopped) return Value::dictionary({{"app", name(before)}});
    Value options = Value::dictionary();
    if (payload) options.set(UIApplicationLaunchOptionsRemoteNotificationKey, payload);
    const AppRun run = runApp({.comesForward = true, .launchOptions = options});
    return Value::dictionary({{"app", name(run.state)}});
}

Value Device::tellApp(std::vector<Value> steps, std::optional<AppState> target) {
    const AppRun run = runApp({.steps = std::move(steps), .target = target});
    return Value::dictionary({{"app", name(run.state)}});
}

Value Device::fetch(const Value& normal, const Value& scheduled) {
    constexpr platform::AuthorizationStatus kDenied = 1;
    Value order = step(kStepFetch);
    order.set("normal", normal);
    order.set("scheduled", scheduled);
    const AppRun run = runApp({.steps = {order}});
    SystemState& state = platform_->systemState();
    return Value::dictionary({{"app", name(run.state)},
                              {"pending", state.pending().size()},
                              {"permitted", permissionOf(state) > kDenied}});
}

Value Device::silentPush(const Value& payload) {
    const Value delivery = deliverSilently({randomIdentifier(), contentOfPush(payload)});
    return Value::dictionary({{kAnswerFetchResult, delivery[kAnswerFetchResult]}});
}

Value Device::present(const Value& payload) {
    if (appStateOf(platform_->systemState()) != AppState::foreground) {
        runApp({.comesForward = true});
    }
    return deliver(payload, std::nullopt);
}

Value Device::badge() {
    const AppRun run = runApp({.steps = {step(kStepBadge)}});
    const Value& count = run.answers[kAnswerBadge];
    platform_->systemState().setSetting(kSettingBadge, std::to_string(count.integerValue()));
    return Value::dictionary({{"badge", count}});
}

Value Device::setPermission(platform::AuthorizationStatus status) {
    platform_->systemState().setSetting(kSettingPermission, std::to_string(status));
    return Value::dictionary({{"permission", status}});
}

Value Device::setCoreAnswer(std::string_view setting, bool value) {
    platform_->systemState().setSetting(setting, value ? "true" : "false");
    return Value::dictionary({{setting.substr(setting.find('.') + 1), value}});
}

// The core SDK keeps the identity where the library finds it: in the app group's preferences.
Value Device::setUserIdentity(const std::string& identity) {
    const Value group = platform_->appGroup();
    if (!group) {
        throw DeviceError("the sample app has no app group to keep an identity in; name one in " +
                          folder_.app() + "/Info.plist");
    }
    const auto suite = platform_->preferences().suite(group.string());
    foundation::Failure failure;
    if (suite) {
        failure = (*suite)->set(
            CVNPushPreferences::sharedInstance().getPreferenceKey(kPrefUserIdentity), identity);
    } else {
        failure = suite.error();
    }
    if (failure) {
        throw DeviceError("can't keep the identity in the preferences of " + group.description() +
                          ": " + failure->localizedDescription);
    }
    return Value::dictionary({{"user-identity", identity}});
}

// --- Time -------------------------------------------------------------------------------------

Value Device::advance(double seconds) {
    // Several at once follow one another, so that their times add up.
    const FileLock alone(folder_.system() + "/advance.lock");
    Value fired = firedAtStart_;
    const auto fire = [&](Date date) {
        const Value identifiers = fireUntil(date);
        for (const Value& identifier : identifiers.items())
            fired.append(identifier);
        return identifiers.count() > 0;
    };
    const Date target{clock_.now().secondsSince1970 + seconds};
    fire(target);
    clock_.reach(target);
    // What the app did with them may have taken the clock further.
    while (fire(clock_.now())) {
    }
    return Value::dictionary({{"now", dateText(clock_.now())}, {"fired", fired}});
}

Value Device::fireUntil(Date date) {
    Value identifiers = Value::array();
    while (const auto fired = platform_->systemState().fireNext(date)) {
        clock_.reach(fired->entry.deliveredAt);
        identifiers.append(fired->entry.identifier);
        if (fired->replaced) storage_.remove(readJSON(fired->replaced->content));
        presentIfInForeground(fired->entry);
    }
    return identifiers;
}

void Device::presentIfInForeground(const TrayEntry& entry) {
    if (appStateOf(platform_->systemState()) != AppState::foreground) return;
    Value presentation = step(kStepPresent);
    presentation.set("identifier", entry.identifier);
    presentation.set("content", readJSON(entry.content));
    presentation.set("date", entry.deliveredAt);
    try {
        runAppAlone({.steps = {presentation}});
    } catch (const DeviceError& error) {
        // It lies on the tray all the same.
        log(LogLevel::error, "-[Device presentIfInForeground:]", error.what());
    }
}

}  // namespace tavrolin::device
