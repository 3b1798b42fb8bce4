#pragma once

namespace tavrolin::device {

/// The word on the command line that makes the program a content extension; not for people.
inline constexpr const char* kContentExtensionProcess = "--content-extension-process";

/// The life of the sample app's content extension: one delivered notification in over the channel;
/// its view is laid out and settles, the steps are taken, the pictures are drawn; what came of it
/// goes out. A response that was not answered by then has 5 seconds more of the device's clock.
/// Returns the process's exit status.
int runContentExtensionProcess(int channelDescriptor);

}  // namespace tavrolin::device
