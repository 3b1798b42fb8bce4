#include "device/service_extension_process.h"

#include <malloc.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "device/channel.h"
#include "device/content_values.h"
#include "device/core_sdk.h"
#include "device/device_clock.h"
#include "device/process_messages.h"
#include "device/process_platform.h"
#include "device/sample_service_extension.h"
#include "device/tray_center.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"

namespace tavrolin::device {

using adapters::asio::AsioDispatch;
using adapters::asio::Clock;
using foundation::Value;

namespace {

constexpr double kBudget = 30;          // seconds of the device's clock
constexpr double kGrace = 1;            // seconds between the warning and the end
constexpr double kRequestTimeout = 30;  // seconds of real time until the request must be there
constexpr auto kHeartbeat = std::chrono::seconds(1);

// What this process used at most since it began; a parent's memory is not in it.
std::int64_t peakRSS() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return Value(line.substr(6)).integerValue();
    }
    return 0;
}

// Tells the device every second that this process is alive, and how much it has done.
class Heartbeat {
public:
    Heartbeat(Channel& channel, AsioDispatch& dispatch)
        : thread_([this, &channel, &dispatch] { run(channel, dispatch); }) {}
    ~Heartbeat() {
        {
            const std::lock_guard lock(mutex_);
            stops_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }
    Heartbeat(const Heartbeat&) = delete;
    Heartbeat& operator=(const Heartbeat&) = delete;

private:
    void run(Channel& channel, AsioDispatch& dispatch) {
        std::unique_lock lock(mutex_);
        while (!wake_.wait_for(lock, kHeartbeat, [this] { return stops_; })) {
            channel.send(Value::dictionary(
                {{kMessageActivity, dispatch.activity()}, {kMessageNow, dispatch.now()}}));
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    bool stops_ = false;
    std::thread thread_;
};

// Hands content to the device; the device takes the first and passes over the rest.
class HandBack {
public:
    HandBack(Channel& channel, AsioDispatch& dispatch)
        : channel_(channel), dispatch_(dispatch), pending_(dispatch.pending()) {}

    void operator()(const platform::NotificationContent& content) {
        channel_.send(Value::dictionary({{kMessageContent, valueOf(content)},
                                         {kMessageAt, dispatch_.now()},
                                         {kMessageExpired, hasExpired_.load()}}));
        isDone_ = true;
        const std::lock_guard lock(mutex_);
        pending_.reset();
    }
    void expire() { hasExpired_ = true; }
    bool isDone() const { return isDone_; }

private:
    Channel& channel_;
    AsioDispatch& dispatch_;
    std::atomic<bool> hasExpired_{false};
    std::atomic<bool> isDone_{false};
    std::mutex mutex_;
    std::unique_ptr<AsioDispatch::Pending> pending_;  // until content was handed back
};

void keepMemorySmall() {
    // One arena a thread costs more than the few threads of an extension gain from it.
    mallopt(M_ARENA_MAX, 2);
    mallopt(M_TRIM_THRESHOLD, 256 * 1024);
    mallopt(M_TOP_PAD, 512 * 1024);
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
}

void serve(Channel& channel, const Value& message) {
    const DeviceFolder folder(message[kMessageDevice].string());
    const foundation::Date start = message[kMessageStart].date();
    const Clock clock = message[kMessageJumping].boolValue()
                            ? Clock::jumping(start)
                            : Clock::real(foundation::secondsBetween(machineTime(), start));
    ProcessPlatform platform(folder, "service-extension", clock, message[kMessageRun].string());
    platform.makeContainer();
    AsioDispatch& dispatch = platform.dispatch();
    TrayCenter center(platform.systemState(), dispatch, platform.json(),
                      [&channel](const std::vector<std::string>& removed) {
                          Value identifiers = Value::array();
                          for (const std::string& identifier : removed) {
                              identifiers.append(identifier);
                          }
                          channel.send(Value::dictionary({{kMessageRemoved, identifiers}}));
                      });
    platform.install(center, static_cast<int>(message[kMessageLogLevel].integerValue()));
    CVNPushCorvalenHandler::sharedInstance().setCorvalenAdapter(
        std::make_shared<CoreSDK>(platform.systemState(), dispatch, platform.json()));

    HandBack handBack(channel, dispatch);
    SampleServiceExtension extension;
    dispatch.deadlineMain(kBudget, [&] {
        if (!handBack.isDone()) {
            handBack.expire();
            extension.serviceExtensionTimeWillExpire();
        }
        dispatch.deadlineMain(kGrace, [&] { dispatch.stop(); });
    });
    const platform::NotificationRequest request{std::string(message[kMessageIdentifier].string()),
                                                contentOf(message[kMessageContent])};
    dispatch.asyncGlobal(platform::QueuePriority::high, [&] {
        extension.didReceiveNotificationRequest(
            request, [&](const platform::NotificationContent& content) { handBack(content); });
    });
    const Heartbeat heartbeat(channel, dispatch);
    dispatch.runMainUntilIdle();
    channel.send(Value::dictionary({{kMessageEnd, dispatch.now()}, {kMessagePeakRSS, peakRSS()}}));
    // Work that hangs must not keep the process: what counts is on disk, and nothing is unwound.
    std::_Exit(EXIT_SUCCESS);
}

}  // namespace

int runServiceExtensionProcess(int channelDescriptor) {
    // When the device is killed, its extension goes too.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    keepMemorySmall();
    Channel channel(channelDescriptor);
    Value message;
    if (channel.receive(message, kRequestTimeout) != Channel::Received::message) {
        std::fputs("tavrolin: this process is started by the device, not by hand\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        serve(channel, message);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tavrolin: service extension: %s\n", error.what());
    }
    return EXIT_FAILURE;
}

}  // namespace tavrolin::device
