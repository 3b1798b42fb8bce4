#include "device/extension_launcher.h"

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
#include "device/content_values.h"
#include "device/device_error.h"
#include "device/process_messages.h"
#include "device/service_extension_process.h"
#include "tavrolin/foundation/exception.h"

extern char** environ;

namespace tavrolin::device {

using foundation::Date;
using foundation::Value;

namespace {

// In seconds of real time. A process that is stopped says nothing; one that is caught in a loop
// lives and does nothing. Both are ended; the process's own clock is what ends it otherwise.
constexpr double kSilenceLimit = 10;
constexpr double kStandstillLimit = 35;
constexpr int kChildDescriptor = 3;

[[noreturn]] void fail(int error) {
    throw DeviceError("can't start an extension process: " +
                      std::generic_category().message(error));
}

// A started process; it is gone, and collected, when this is.
class Process {
public:
    Process(const std::string& executable, int descriptor) {
        posix_spawn_file_actions_t actions{};
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        // What it prints must not mix with the device's own output.
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, descriptor, kChildDescriptor);
        std::string program = executable;
        std::string word = kServiceExtensionProcess;
        std::array<char*, 3> arguments = {program.data(), word.data(), nullptr};
        const int error =
            posix_spawn(&pid_, executable.c_str(), &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (error != 0) fail(error);
    }
    ~Process() {
        kill(pid_, SIGKILL);
        while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

private:
    pid_t pid_ = -1;
};

class Conversation {
public:
    Conversation(Channel& channel, const ExtensionRun& run) : channel_(channel), run_(run) {
        result_.handedBackAt = run.start;
        result_.endedAt = run.start;
    }

    ExtensionResult hold() {
        while (listen()) {
        }
        settleOutcome();
        return std::move(result_);
    }

private:
    using Clock = std::chrono::steady_clock;

    // False at the end of the conversation.
    bool listen() {
        Value message;
        switch (channel_.receive(message, kSilenceLimit)) {
            case Channel::Received::message:
                return take(message) && !standsStill();
            case Channel::Received::nonsense:
                hasSaidNonsense_ = true;
                return false;
            default:
                return false;
        }
    }

    bool take(const Value& message) {
        try {
            if (message[kMessageContent]) takeContent(message);
            for (const Value& identifier : message[kMessageRemoved].items()) {
                result_.removed.emplace_back(identifier.string());
            }
            if (const Value& activity = message[kMessageActivity]) {
                if (activity.integerValue() != activity_) lastMove_ = Clock::now();
                activity_ = activity.integerValue();
            }
            if (const Value& now = message[kMessageNow]) {
                result_.endedAt = std::max(result_.endedAt, now.date());
            }
            if (const Value& peak = message[kMessagePeakRSS]) {
                result_.peakRSSKiB = peak.integerValue();
            }
            if (const Value& end = message[kMessageEnd]) {
                result_.endedAt = std::max(result_.endedAt, end.date());
                hasEnded_ = true;
            }
        } catch (const foundation::Exception&) {
            hasSaidNonsense_ = true;
            return false;
        }
        return true;
    }

    // The first content counts; the library may hand back a second time after its time ran out.
    void takeContent(const Value& message) {
        if (result_.content) return;
        platform::NotificationContent content = contentOf(message[kMessageContent]);
        result_.handedBackAt = std::max(message[kMessageAt].date(), run_.start);
        result_.endedAt = std::max(result_.endedAt, result_.handedBackAt);
        hasExpired_ = message[kMessageExpired].boolValue();
        result_.content = std::move(content);
    }

    bool standsStill() const {
        return std::chrono::duration<double>(Clock::now() - lastMove_).count() > kStandstillLimit;
    }

    void settleOutcome() {
        using Outcome = ExtensionResult::Outcome;
        if (result_.content) {
            result_.outcome = hasExpired_ ? Outcome::expired : Outcome::completed;
        } else if (hasEnded_ && !hasSaidNonsense_) {
            // It lived its whole time and never handed anything back.
            result_.outcome = Outcome::expired;
            result_.handedBackAt = result_.endedAt;
        } else {
            result_.outcome = Outcome::crashed;
            result_.handedBackAt = result_.endedAt;
        }
    }

    Channel& channel_;
    const ExtensionRun& run_;
    ExtensionResult result_;
    bool hasExpired_ = false;
    bool hasEnded_ = false;
    bool hasSaidNonsense_ = false;
    std::int64_t activity_ = -1;
    Clock::time_point lastMove_ = Clock::now();
};

}  // namespace

ExtensionResult runServiceExtension(const DeviceFolder& folder,
                                    const platform::NotificationRequest& request,
                                    const ExtensionRun& run) {
    std::array<int, 2> sockets{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) fail(errno);
    Channel channel(sockets[0]);
    // The child's end must be closed here, or its death would not be heard.
    std::optional<Process> process;
    try {
        process.emplace(run.executable, sockets[1]);
    } catch (...) {
        close(sockets[1]);
        throw;
    }
    close(sockets[1]);
    channel.send(Value::dictionary({{kMessageDevice, folder.root()},
                                    {kMessageJumping, run.time == TimeMode::jump},
                                    {kMessageStart, run.start},
                                    {kMessageLogLevel, run.logLevel},
                                    {kMessageRun, run.name},
                                    {kMessageIdentifier, request.identifier},
                                    {kMessageContent, valueOf(request.content)}}));
    return Conversation(channel, run).hold();
}

}  // namespace tavrolin::device
