#pragma once

#include "device/device_folder.h"
#include "tavrolin/foundation/date.h"

namespace tavrolin::device {

/// The device's clock, which lives in its folder. Between two commands it goes on as real time
/// does, never backwards; a command may take it ahead. Several commands may use it at once: it
/// keeps the latest time that any of them reached.
class DeviceClock {
public:
    explicit DeviceClock(const DeviceFolder& folder);

    /// The time now; for a new device the machine's.
    foundation::Date now() const;
    /// Whether what was kept can't be read any more; the machine's time is taken then.
    bool isDamaged() const;
    /// Takes the clock ahead to the date, if it isn't there yet; to the end of the year 9999 at
    /// most. Throws DeviceError.
    void reach(foundation::Date date) const;

private:
    std::string file_;
};

/// The machine's time.
foundation::Date machineTime();

}  // namespace tavrolin::device
