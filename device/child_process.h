#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tavrolin/foundation/date.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::device {

class Channel;

enum class TimeMode { real, jump };

/// What every process of the device is started with.
struct ProcessStart {
    std::string executable;  // the program that can be started as such a process
    std::string folder;      // the device's
    TimeMode time = TimeMode::real;
    foundation::Date start;
    int logLevel = 4;
    std::string run;       // names the run's temporary folder, which is the caller's to remove
    double patience = 35;  // seconds of real time that it may go without doing anything
};

/// How a process ended.
struct ProcessEnd {
    bool isProper = false;  // it said that all its work was done
    foundation::Date at;    // when it ended, as far as it could say
    std::optional<std::int64_t> peakRSSKiB = std::nullopt;
};

/// A process of the device that was started and waits for the message that tells it what to do. It
/// is killed at the end of its conversation, and collected when this goes.
class ChildProcess {
public:
    /// Throws DeviceError when it can't be started.
    ChildProcess(const std::string& executable, const char* kind);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Hands it the message, and listens until its end. `take` gets whatever it says of its own;
    /// raising `foundation::Exception` there means that it talks nonsense. Its death, its silence
    /// (10 seconds without a sign of life), standing still beyond the patience, and nonsense all
    /// end it, and are no proper end. Throws DeviceError only when the message is too large for it.
    /// Once.
    ProcessEnd converse(const ProcessStart& start, foundation::Value message,
                        const std::function<void(const foundation::Value&)>& take);

private:
    void kill();

    std::unique_ptr<Channel> channel_;
    pid_t pid_ = -1;
};

/// Both at once, with the program of `start`.
ProcessEnd runProcess(const ProcessStart& start, const char* kind, foundation::Value message,
                      const std::function<void(const foundation::Value&)>& take);

}  // namespace tavrolin::device
