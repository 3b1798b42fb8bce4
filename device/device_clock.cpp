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

namespace tavrolin::device {

using foundation::Date;

namespace {

// A file descriptor that is closed, and with it unlocked, at the end.
class LockedFile {
public:
    explicit LockedFile(int descriptor) : descriptor_(descriptor) {}
    ~LockedFile() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;
    int get() const { return descriptor_; }

private:
    int descriptor_;
};

// The device's time and the machine's time when it was written down.
struct Reading {
    double device = 0;
    double machine = 0;
};

// From the year 1 to the year 9999.
constexpr double kFirstMoment = -62135596800.0;
constexpr double kLastMoment = 253402300799.0;

bool isMoment(double seconds) {
    return seconds >= kFirstMoment && seconds <= kLastMoment;
}

std::optional<Reading> read(int descriptor) {
    std::array<char, 128> text{};
    const ssize_t size = pread(descriptor, text.data(), text.size() - 1, 0);
    Reading reading;
    if (size <= 0 || std::sscanf(text.data(), "%lf %lf", &reading.device, &reading.machine) != 2 ||
        !isMoment(reading.device) || !isMoment(reading.machine)) {
        return std::nullopt;
    }
    return reading;
}

// A machine whose own clock was set back makes no time pass.
double presentTime(const std::optional<Reading>& reading) {
    const double machine = machineTime().secondsSince1970;
    return reading ? reading->device + std::max(0.0, machine - reading->machine) : machine;
}

}  // namespace

Date machineTime() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(now).count()};
}

DeviceClock::DeviceClock(const DeviceFolder& folder) : file_(folder.clockFile()) {}

Date DeviceClock::now() const {
    const LockedFile file(open(file_.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) return machineTime();
    flock(file.get(), LOCK_SH);
    return {presentTime(read(file.get()))};
}

bool DeviceClock::isDamaged() const {
    const LockedFile file(open(file_.c_str(), O_RDONLY | O_CLOEXEC));
    return file.get() >= 0 && !read(file.get());
}

void DeviceClock::reach(Date date) const {
    const LockedFile file(open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (file.get() < 0) {
        throw DeviceError("can't write the device's clock " + file_ + ": " +
                          std::generic_category().message(errno));
    }
    flock(file.get(), LOCK_EX);
    const double present =
        std::min(std::max(presentTime(read(file.get())), date.secondsSince1970), kLastMoment);
    std::array<char, 128> text{};
    // Of a fixed width, so that a shorter text never leaves a longer one's end behind.
    const int size = std::snprintf(text.data(), text.size(), "%024.9f %024.9f\n", present,
                                   machineTime().secondsSince1970);
    if (pwrite(file.get(), text.data(), static_cast<std::size_t>(size), 0) != size) {
        throw DeviceError("can't write the device's clock " + file_ + ": " +
                          std::generic_category().message(errno));
    }
}

}  // namespace tavrolin::device
