#pragma once

namespace tavrolin::device {

/// The word on the command line that makes the program a service extension; not for people.
inline constexpr const char* kServiceExtensionProcess = "--service-extension-process";

/// The life of the sample app's service extension: one request in over the channel, content out,
/// and an end when its own delayed work is done. Its time is 30 seconds of the device's clock; then
/// it is told so, and one second later it ends. Returns the process's exit status.
int runServiceExtensionProcess(int channelDescriptor);

}  // namespace tavrolin::device
