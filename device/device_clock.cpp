#include "device/device_clock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <system_error>

#include "device/device_error.h"
#include "tavrolin/events/date_utility.h"

namespace tavrolin::device {

using foundation::Date;

namespace {

// From the year 1 to the year 9999.
constexpr double kFirstMoment = -62135596800.0;
constexpr double kLastMoment = 253402300799.0;

bool isMoment(double seconds) {
    return seconds >= kFirstMoment && seconds <= kLastMoment;
}

}  // namespace

Date machineTime() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(now).count()};
}

// The clock's file, locked until the end; absent until a time is written down.
class DeviceClock::File {
public:
    enum class For { reading, writing };

    File(const std::string& path, For purpose)
        : path_(path),
          descriptor_(open(path.c_str(),
                           (purpose == For::writing ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC,
                           0600)) {
        if (descriptor_ < 0 && purpose == For::writing) fail();
        if (descriptor_ >= 0) flock(descriptor_, purpose == For::writing ? LOCK_EX : LOCK_SH);
    }
    ~File() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isThere() const { return descriptor_ >= 0; }
    std::optional<Reading> read() const;
    void write(double deviceTime) const;

private:
    [[noreturn]] void fail() const {
        throw DeviceError("can't write the device's clock " + path_ + ": " +
                          std::generic_category().message(errno));
    }

    const std::string& path_;
    int descriptor_;
};

std::optional<DeviceClock::Reading> DeviceClock::File::read() const {
    std::array<char, 128> text{};
    const ssize_t size = isThere() ? pread(descriptor_, text.data(), text.size() - 1, 0) : 0;
    Reading reading;
    if (size <= 0 || std::sscanf(text.data(), "%lf %lf", &reading.device, &reading.machine) != 2 ||
        !isMoment(reading.device) || !isMoment(reading.machine)) {
        return std::nullopt;
    }
    return reading;
}

void DeviceClock::File::write(double deviceTime) const {
    std::array<char, 128> text{};
    // Of a fixed width, so that a shorter text never leaves a longer one's end behind.
    const int size = std::snprintf(text.data(), text.size(), "%024.9f %024.9f\n", deviceTime,
                                   machineTime().secondsSince1970);
    if (pwrite(descriptor_, text.data(), static_cast<std::size_t>(size), 0) != size) fail();
}

DeviceClock::DeviceClock(const DeviceFolder& folder) : file_(folder.clockFile()) {}

// A machine whose own clock was set back makes no time pass.
double DeviceClock::presentTime(const std::optional<Reading>& reading) const {
    const double machine = machineTime().secondsSince1970;
    if (!reading) return machine;
    return reading->device + (isStopped_ ? 0 : std::max(0.0, machine - reading->machine));
}

void DeviceClock::set(Date date) const {
    const File file(file_, File::For::writing);
    const std::optional<Reading> reading = file.read();
    if (reading && presentTime(reading) > date.secondsSince1970) {
        throw DeviceError("the device's clock is at " +
                          CVNPushDateUtility::dateStringFromDate({presentTime(reading)}) +
                          " already and never goes back; a new device can begin at any time");
    }
    file.write(date.secondsSince1970);
}

Date DeviceClock::now() const {
    return {presentTime(File(file_, File::For::reading).read())};
}

bool DeviceClock::isDamaged() const {
    const File file(file_, File::For::reading);
    return file.isThere() && !file.read();
}

void DeviceClock::reach(Date date) const {
    const File file(file_, File::For::writing);
    file.write(std::min(std::max(presentTime(file.read()), date.secondsSince1970), kLastMoment));
}

}  // namespace tavrolin::device
