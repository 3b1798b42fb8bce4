#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "device/app_launcher.h"
#include "device/attachment_storage.h"
#include "device/child_process.h"
#include "device/device_clock.h"
#include "device/device_folder.h"
#include "device/expand_order.h"
#include "device/run_folder.h"
#include "device/system_state.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::device {

class ProcessPlatform;

struct DeviceOptions {
    std::string folder;
    TimeMode time = TimeMode::real;
    std::optional<foundation::Date> now = std::nullopt;  // what the clock is set to at the start
    int logLevel = 4;
    std::string executable = "/proc/self/exe";  // what is started for the app's processes
    std::string contentExtension = {};          // what draws; empty: the one beside this program
    bool expands = false;                       // what draws is started while the device is opened
};

/// The phone in a folder. One object a process, since it installs the library's ports.
///
/// Results are Values in the form that the command line prints with `--json`. Everything that can't
/// be done throws DeviceError. One thread.
class Device {
public:
    /// Makes the folder on first use.
    explicit Device(DeviceOptions options);
    ~Device();

    /// A push's user info from JSON text. With a limit, what is larger than that many bytes in the
    /// compact form is refused.
    foundation::Value parsePayload(std::string_view text, std::optional<std::size_t> limit) const;
    /// Payloads from JSON text: an array of objects, without a limit.
    foundation::Value parsePayloads(std::string_view text) const;
    /// Hands one payload to the device, as the push service would. Without an identifier the
    /// request gets a new one.
    foundation::Value deliver(const foundation::Value& payload,
                              const std::optional<std::string>& identifier);

    // Looking. A list may be long: it is handed over element by element, each as JSON text.
    using Take = std::function<void(std::string_view)>;
    void tray(const Take& take);
    void pending(const Take& take);
    void store(const Take& take);
    void events(const Take& take);
    void categories(const Take& take);
    foundation::Value flushes();  // {"flushes": N}
    foundation::Value preferences();
    foundation::Value outbox();

    // Acting, as the user would. `removed` are identifiers that were on the tray.
    /// Opens the notification, or presses an action of its menu with the text that was typed:
    /// {"app": state}.
    foundation::Value respond(const std::string& identifier, const std::string& actionIdentifier,
                              const std::optional<std::string>& userText);
    foundation::Value dismiss(const std::string& identifier);  // {"removed"}
    foundation::Value clear();                                 // {"removed"}
    /// Expands the notification and takes the order's steps: {"view", "story"} of Expansion. The
    /// pictures are written once all of it was done.
    foundation::Value expand(ExpandOrder order);

    // Acting, on the app, which is started for it: {"app": state}, with what it answered.
    /// The payload is what the push service's notification brought along, or nil. Does nothing when
    /// the app runs.
    foundation::Value launchApp(const foundation::Value& payload);
    /// One step after another; see app_process.h.
    foundation::Value tellApp(std::vector<foundation::Value> steps,
                              std::optional<AppState> target = std::nullopt);
    /// Campaigns of the core SDK's silent fetch, arrays of payloads: {"app", "pending": how many
    /// requests wait, "permitted"}.
    foundation::Value fetch(const foundation::Value& normal, const foundation::Value& scheduled);
    foundation::Value silentPush(const foundation::Value& payload);  // {"fetchResult"}
    /// A push that arrives while the app is in the foreground: as `deliver`.
    foundation::Value present(const foundation::Value& payload);
    foundation::Value badge();  // {"badge"}
    /// The user's decision in the system's settings: {"permission": status}.
    foundation::Value setPermission(platform::AuthorizationStatus status);
    /// {KEY: value}.
    foundation::Value setCoreAnswer(std::string_view setting, bool value);
    foundation::Value setUserIdentity(const std::string& identity);

    /// Lets so many seconds pass: {"now", "fired"}.
    foundation::Value advance(double seconds);

    /// Empties the device at the folder, which need not be readable for that.
    static void reset(std::string_view folder);

    /// The size in bytes that the push service takes: of the compact form.
    static constexpr std::size_t kLargestPayload = 4096;

private:
    ProcessStart processStart() const;
    foundation::Value deliverSilently(const platform::NotificationRequest& request);
    foundation::Value deliverThroughExtension(platform::NotificationRequest request,
                                              bool isRecognised);
    void setClock(foundation::Date date);
    /// Removes the files that killed commands left.
    void tidyUp();
    /// Puts the request on the tray, and before the app when that is in the foreground. What fell
    /// due before that comes first.
    void show(const platform::NotificationRequest& request, foundation::Date at,
              foundation::Value& replaced);
    void presentIfInForeground(const TrayEntry& entry);
    /// Fires what is due by that date, and gives the identifiers.
    foundation::Value fireUntil(foundation::Date date);
    AppRun runAppAlone(AppOrder order);
    [[noreturn]] static void failWithout(const std::string& identifier);
    platform::DeliveredNotification delivered(const std::string& identifier);
    void startContentExtension();
    /// The menu of that category.
    std::vector<platform::NotificationAction> actionsFor(const foundation::Value& category);
    /// A run of the app, and what fell due in its time.
    AppRun runApp(AppOrder order);
    void showStoreIn(const std::string& folder, const Take& take);
    foundation::Value removed(const std::vector<TrayEntry>& entries);
    foundation::Value readJSON(const std::string& text) const;
    std::string writeJSON(const foundation::Value& value) const;
    bool isObject(std::string_view text) const;
    std::string elementText(const foundation::Value& fields, std::string_view content) const;

    DeviceOptions options_;
    std::optional<ChildProcess> contentExtension_;  // its end takes as long as that of the others
    DeviceFolder folder_;
    DeviceClock clock_;
    AttachmentStorage storage_;
    std::unique_ptr<ProcessPlatform> platform_;
    std::optional<RunFolder> run_;  // says that this command is at work
    foundation::Value firedAtStart_;
};

}  // namespace tavrolin::device
