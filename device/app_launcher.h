#pragma once

#include <string_view>
#include <vector>

#include "device/child_process.h"
#include "device/device_clock.h"
#include "device/device_folder.h"
#include "device/system_state.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::device {

/// Where the app is in its life.
enum class AppState { stopped, background, foreground };
std::string_view name(AppState state);
/// As the system keeps it.
AppState appStateOf(SystemState& state);

/// What came of a run of the app.
struct AppRun {
    AppState state = AppState::stopped;  // stopped when it died
    foundation::Date start;
    foundation::Date end;
    foundation::Value answers;  // {name: value}
    std::optional<std::int64_t> peakRSSKiB;
};

/// What a run of the app is for.
struct AppOrder {
    std::vector<foundation::Value> steps = {};  // those of app_process.h
    /// Where the app stays; nothing leaves it where it is, a started one in the background.
    std::optional<AppState> target = std::nullopt;
    /// The user comes to the app: it enters the foreground and becomes active unless it is there.
    bool comesForward = false;
    foundation::Value launchOptions = foundation::Value::dictionary();
};

/// Runs the sample app, as a process of its own. The system puts an app that has nothing to do to
/// rest: between two runs it is no process, only its state. A run wakes it, or starts it when it
/// isn't running, and takes the clock to where its work ended. One run at a time: another waits.
class AppLauncher {
public:
    AppLauncher(const DeviceFolder& folder, const DeviceClock& clock, SystemState& state,
                ProcessStart process)
        : folder_(folder), clock_(clock), state_(state), process_(std::move(process)) {}

    /// Before the order's steps comes what the user did and no run has taken. Throws DeviceError
    /// when the app can't be started or dies; it is stopped then.
    AppRun run(AppOrder order);

private:
    const DeviceFolder& folder_;
    const DeviceClock& clock_;
    SystemState& state_;
    ProcessStart process_;
};

/// A step without arguments.
foundation::Value step(std::string_view name);

}  // namespace tavrolin::device
