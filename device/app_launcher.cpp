#include "device/app_launcher.h"

#include <algorithm>
#include <utility>

#include "device/app_process.h"
#include "device/device_error.h"
#include "device/file_lock.h"
#include "device/process_messages.h"
#include "device/run_folder.h"

namespace tavrolin::device {

using foundation::Value;

namespace {

constexpr std::string_view kSettingAppState = "app";
constexpr double kPatience = 70;  // more than a transfer has that never comes

}  // namespace

std::string_view name(AppState state) {
    switch (state) {
        case AppState::foreground:
            return "foreground";
        case AppState::background:
            return "background";
        default:
            return "stopped";
    }
}

AppState appStateOf(SystemState& state) {
    const auto kept = state.setting(kSettingAppState);
    for (const AppState each : {AppState::foreground, AppState::background}) {
        if (kept == name(each)) return each;
    }
    return AppState::stopped;
}

Value step(std::string_view name) {
    return Value::dictionary({{kStepName, name}});
}

AppRun AppLauncher::run(AppOrder order) {
    const FileLock alone(folder_.system() + "/app.lock");
    const AppState before = appStateOf(state_);
    const bool starts = before == AppState::stopped;
    if (order.comesForward) order.target = AppState::foreground;
    const AppState after = order.target.value_or(starts ? AppState::background : before);
    const bool entersForeground = order.comesForward && before != AppState::foreground;

    Value all = Value::array();
    if (starts) {
        Value launch = step(kStepLaunch);
        launch.set("options", std::move(order.launchOptions));
        all.append(std::move(launch));
    }
    // An app that is started doesn't enter the foreground: it never was anywhere else.
    if (entersForeground && !starts) all.append(step(kStepWillEnterForeground));
    if (!state_.responses().empty()) all.append(step(kStepTakeResponses));
    if (entersForeground) all.append(step(kStepDidBecomeActive));
    for (Value& each : order.steps)
        all.append(std::move(each));

    AppRun run;
    run.start = clock_.now();
    run.answers = Value::dictionary();
    process_.start = run.start;
    process_.run = randomIdentifier();
    process_.patience = kPatience;
    const RunFolder temporary(folder_.temporaryFolder("app", process_.run));
    const ProcessEnd end =
        runProcess(process_, kAppProcess,
                   Value::dictionary({{kMessageWakes, !starts},
                                      {kMessageInForeground, after == AppState::foreground},
                                      {kMessageSteps, all}}),
                   [&](const Value& message) {
                       for (const auto& [key, value] : message[kMessageAnswers].entries())
                           run.answers.set(key, value);
                   });
    run.end = std::max(end.at, run.start);
    run.peakRSSKiB = end.peakRSSKiB;
    run.state = end.isProper ? after : AppState::stopped;
    if (run.state != before) state_.setSetting(kSettingAppState, name(run.state));
    clock_.reach(run.end);
    if (!end.isProper) {
        throw DeviceError(state_.responses().empty()
                              ? "the app died; the next command that needs it starts it anew"
                              : "the app died; what the user did and it had not taken is kept for "
                                "its next start");
    }
    return run;
}

}  // namespace tavrolin::device
