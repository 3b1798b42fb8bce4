#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/asio/asio_dispatch.h"
#include "device/device_folder.h"
#include "device/system_notification_center.h"
#include "device/system_state.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

/// The ports of one process of the device, over its folder. Made once and kept until the process
/// ends. Each kind of process has a container of its own, named after it; what one run of it
/// downloads lies in a temporary folder there, named after the run, which whoever started the
/// process removes.
class ProcessPlatform {
public:
    /// `process`: "device", "service-extension", …
    ProcessPlatform(const DeviceFolder& folder, std::string_view process,
                    adapters::asio::Clock clock, std::string_view run = "none");
    ~ProcessPlatform();

    /// Makes the folders that an app's process may write to. Throws DeviceError.
    void makeContainer();
    /// The ports that differ from process to process. They live as long as it does.
    struct OwnPorts {
        platform::UserNotificationCenter& center;
        platform::Application* application = nullptr;  // none: it hears and opens nothing
        platform::Pasteboard* pasteboard = nullptr;    // none: what is copied goes nowhere
        platform::DrawingPorts drawing = {};           // of a process that draws
    };
    /// Installs the ports and sets the log threshold.
    void install(const OwnPorts& ports, int logLevel);
    /// A center over the system state, for this process.
    SystemNotificationCenter makeNotificationCenter(
        std::function<void(const std::vector<std::string>&)> didRemove);

    /// For a jumping clock: whenever so many seconds have passed and nothing else is left,
    /// transfers that are silent have had their time. (A real clock leaves them the session's own.)
    void endSilentTransfersEvery(double seconds);

    adapters::asio::AsioDispatch& dispatch();
    platform::RecordStores& recordStores();
    platform::PreferencesSuites& preferences();
    platform::JSONText& json();
    SystemState& systemState();

    /// The app group that the sample app's Info dictionary names; nil when it names none. Throws
    /// DeviceError when the dictionary can't be read.
    foundation::Value appGroup();
    /// Where the app's notification store lies: in the app group's container, or without one among
    /// the documents of the process.
    std::string storeDirectory(std::string_view process);

private:
    struct Adapters;
    std::unique_ptr<Adapters> adapters_;
};

}  // namespace tavrolin::device
