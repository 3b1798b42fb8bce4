#include "device/process_life.h"

#include <malloc.h>
#include <sys/prctl.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

#include "device/device_clock.h"
#include "device/process_messages.h"

namespace tavrolin::device {

using adapters::asio::AsioDispatch;
using adapters::asio::Clock;
using foundation::Value;

namespace {

constexpr double kRequestTimeout =
    30;  // seconds of real time until the first message must be there
constexpr auto kHeartbeat = std::chrono::seconds(1);

// What this process used at most since it began; a parent's memory is not in it.
std::int64_t peakRSS() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return Value(line.substr(6)).integerValue();
    }
    return 0;
}

void keepMemorySmall() {
    // One arena a thread costs more than the few threads of such a process gain from it.
    mallopt(M_ARENA_MAX, 2);
    mallopt(M_TRIM_THRESHOLD, 256 * 1024);
    mallopt(M_TOP_PAD, 512 * 1024);
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
}

Clock clockOf(const Value& message) {
    const foundation::Date start = message[kMessageStart].date();
    return message[kMessageJumping].boolValue()
               ? Clock::jumping(start)
               : Clock::real(foundation::secondsBetween(machineTime(), start));
}

}  // namespace

// Tells the device every second that this process is alive, and how much it has done.
class ProcessLife::Heartbeat {
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

ProcessLife::ProcessLife(Channel& channel, const Value& start, std::string_view process)
    : channel_(channel),
      platform_(DeviceFolder(start[kMessageDevice].string()), process, clockOf(start),
                start[kMessageRun].string()),
      logLevel_(static_cast<int>(start[kMessageLogLevel].integerValue())) {
    platform_.makeContainer();
    heartbeat_ = std::make_unique<Heartbeat>(channel, dispatch());
}

ProcessLife::~ProcessLife() = default;

void ProcessLife::end() {
    channel_.send(
        Value::dictionary({{kMessageEnd, dispatch().now()}, {kMessagePeakRSS, peakRSS()}}));
    std::_Exit(EXIT_SUCCESS);
}

int serveProcess(int channelDescriptor, std::string_view name,
                 void (*serve)(Channel&, const Value&)) {
    // When the device is killed, its processes go too.
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
        std::fprintf(stderr, "tavrolin: %.*s: %s\n", static_cast<int>(name.size()), name.data(),
                     error.what());
    }
    return EXIT_FAILURE;
}

}  // namespace tavrolin::device
