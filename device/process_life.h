#pragma once

#include <memory>
#include <string_view>

#include "device/channel.h"
#include "device/process_platform.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::device {

/// What the processes of the device have in common, from the first message to the end: the ports
/// over the device's folder on the device's clock, and a sign of life every second.
class ProcessLife {
public:
    /// `process` names the container. Throws DeviceError.
    ProcessLife(Channel& channel, const foundation::Value& start, std::string_view process);
    ~ProcessLife();
    ProcessLife(const ProcessLife&) = delete;
    ProcessLife& operator=(const ProcessLife&) = delete;

    ProcessPlatform& platform() { return platform_; }
    adapters::asio::AsioDispatch& dispatch() { return platform_.dispatch(); }
    /// The threshold that the process was started with.
    int logLevel() const { return logLevel_; }
    /// Tells the device that all work is done, and ends the process. Work that hangs doesn't keep
    /// it: what counts is on disk, and nothing is unwound.
    [[noreturn]] void end();

private:
    class Heartbeat;

    Channel& channel_;
    ProcessPlatform platform_;
    int logLevel_;
    std::unique_ptr<Heartbeat> heartbeat_;
};

/// The body of such a process: receives the first message and serves it. Gives the exit status of a
/// process that could not be served; one that could ends itself.
int serveProcess(int channelDescriptor, std::string_view name,
                 void (*serve)(Channel& channel, const foundation::Value& message));

}  // namespace tavrolin::device
