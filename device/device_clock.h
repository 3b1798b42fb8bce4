#pragma once

#include <optional>
#include <string>

#include "device/device_folder.h"
#include "tavrolin/foundation/date.h"

namespace tavrolin::device {

/// The device's clock, which lives in its folder. Between two commands it goes on as real time
/// does, never backwards; a command may take it ahead. Several commands may use it at once: it
/// keeps the latest time that any of them reached.
class DeviceClock {
public:
    explicit DeviceClock(const DeviceFolder& folder);

    /// Takes the clock to the date. Throws DeviceError when it is beyond that already; a new
    /// device's begins wherever it is set.
    void set(foundation::Date date) const;
    /// From here on no time passes, as this object sees it, but what it is taken ahead.
    void stop() { isStopped_ = true; }

    /// The time now; for a new device the machine's.
    foundation::Date now() const;
    /// Whether what was kept can't be read any more; the machine's time is taken then.
    bool isDamaged() const;
    /// Takes the clock ahead to the date, if it isn't there yet; to the end of the year 9999 at
    /// most. Throws DeviceError.
    void reach(foundation::Date date) const;

private:
    class File;
    // The device's time and the machine's time when it was written down.
    struct Reading {
        double device = 0;
        double machine = 0;
    };

    double presentTime(const std::optional<Reading>& reading) const;

    std::string file_;
    bool isStopped_ = false;
};

/// The machine's time.
foundation::Date machineTime();

}  // namespace tavrolin::device
