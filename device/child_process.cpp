#include "device/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <utility>

#include "device/channel.h"
#include "device/device_error.h"
#include "device/process_messages.h"
#include "tavrolin/foundation/exception.h"

extern char** environ;

namespace tavrolin::device {

using foundation::Value;

namespace {

// In seconds of real time. A process that is stopped says nothing; one that is caught in a loop
// lives and does nothing. Both are ended; the process's own clock is what ends it otherwise.
constexpr double kSilenceLimit = 10;
constexpr int kChildDescriptor = 3;

[[noreturn]] void fail(int error) {
    throw DeviceError("can't start a process of the app: " +
                      std::generic_category().message(error));
}

pid_t spawn(const std::string& executable, const char* kind, int descriptor) {
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    // What it prints must not mix with the device's own output.
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, descriptor, kChildDescriptor);
    std::string program = executable;
    std::string word = kind;
    std::array<char*, 3> arguments = {program.data(), word.data(), nullptr};
    pid_t pid = -1;
    const int error =
        posix_spawn(&pid, executable.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    // The child's end must be closed here, or its death would not be heard.
    close(descriptor);
    if (error != 0) fail(error);
    return pid;
}

class Conversation {
public:
    Conversation(Channel& channel, const ProcessStart& start,
                 const std::function<void(const Value&)>& take)
        : channel_(channel), take_(take), patience_(start.patience) {
        end_.at = start.start;
    }

    ProcessEnd hold() {
        while (listen()) {
        }
        return end_;
    }

private:
    using Clock = std::chrono::steady_clock;

    // False at the end of the conversation.
    bool listen() {
        Value message;
        if (channel_.receive(message, kSilenceLimit) != Channel::Received::message) return false;
        try {
            take(message);
        } catch (const foundation::Exception&) {
            end_.isProper = false;
            return false;
        }
        return !end_.isProper && !standsStill();
    }

    void take(const Value& message) {
        take_(message);
        if (const Value& activity = message[kMessageActivity]) {
            if (activity.integerValue() != activity_) lastMove_ = Clock::now();
            activity_ = activity.integerValue();
        }
        if (const Value& now = message[kMessageNow]) end_.at = std::max(end_.at, now.date());
        if (const Value& peak = message[kMessagePeakRSS]) end_.peakRSSKiB = peak.integerValue();
        if (const Value& end = message[kMessageEnd]) {
            end_.at = std::max(end_.at, end.date());
            end_.isProper = true;
        }
    }

    bool standsStill() const {
        return std::chrono::duration<double>(Clock::now() - lastMove_).count() > patience_;
    }

    Channel& channel_;
    const std::function<void(const Value&)>& take_;
    const double patience_;
    ProcessEnd end_;
    std::int64_t activity_ = -1;
    Clock::time_point lastMove_ = Clock::now();
};

}  // namespace

ChildProcess::ChildProcess(const std::string& executable, const char* kind) {
    std::array<int, 2> sockets{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) fail(errno);
    channel_ = std::make_unique<Channel>(sockets[0]);
    pid_ = spawn(executable, kind, sockets[1]);
}

ChildProcess::~ChildProcess() {
    kill();
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

void ChildProcess::kill() {
    ::kill(pid_, SIGKILL);
}

ProcessEnd ChildProcess::converse(const ProcessStart& start, Value message,
                                  const std::function<void(const Value&)>& take) {
    message.set(kMessageDevice, start.folder);
    message.set(kMessageJumping, start.time == TimeMode::jump);
    message.set(kMessageStart, start.start);
    message.set(kMessageLogLevel, start.logLevel);
    message.set(kMessageRun, start.run);
    try {
        if (!channel_->send(message)) return {.isProper = false, .at = start.start};
    } catch (const foundation::Exception& exception) {
        throw DeviceError("can't hand that over: " + exception.reason());
    }
    const ProcessEnd end = Conversation(*channel_, start, take).hold();
    kill();
    return end;
}

ProcessEnd runProcess(const ProcessStart& start, const char* kind, Value message,
                      const std::function<void(const Value&)>& take) {
    return ChildProcess(start.executable, kind).converse(start, std::move(message), take);
}

}  // namespace tavrolin::device
