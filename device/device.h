#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "device/device_clock.h"
#include "device/device_folder.h"
#include "device/extension_launcher.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::device {

class ProcessPlatform;

struct DeviceOptions {
    std::string folder;
    TimeMode time = TimeMode::real;
    int logLevel = 4;
    std::string executable = "/proc/self/exe";  // what is started for the app's processes
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
    /// Hands one payload to the device, as the push service would. Without an identifier the
    /// request gets a new one.
    foundation::Value deliver(const foundation::Value& payload,
                              const std::optional<std::string>& identifier);

    foundation::Value tray();
    foundation::Value store();
    foundation::Value events();
    foundation::Value flushes();  // {"flushes": N}
    foundation::Value preferences();
    foundation::Value outbox();

    /// Empties the device at the folder, which need not be readable for that.
    static void reset(std::string_view folder);

    /// The size in bytes that the push service takes: of the compact form.
    static constexpr std::size_t kLargestPayload = 4096;

private:
    foundation::Value deliverThroughExtension(platform::NotificationRequest request,
                                              bool isRecognised);
    void moveAttachments(platform::NotificationContent& content, const std::string& from,
                         const std::string& to);
    void removeAttachments(const std::string& identifier);
    std::string attachmentsOf(const std::string& identifier) const;
    /// Puts the request on the tray; `run` names the folder of its own attachments.
    void show(const platform::NotificationRequest& request, foundation::Date at,
              const std::string& run, foundation::Value& replaced);
    foundation::Value readJSON(const std::string& text) const;

    DeviceOptions options_;
    DeviceFolder folder_;
    DeviceClock clock_;
    std::unique_ptr<ProcessPlatform> platform_;
};

}  // namespace tavrolin::device
