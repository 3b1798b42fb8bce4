#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "device/child_process.h"
#include "tavrolin/foundation/date.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

/// What came of a service extension's run.
struct ExtensionResult {
    enum class Outcome { completed, expired, crashed };

    Outcome outcome = Outcome::crashed;
    /// What the extension handed back; nothing when it died before, or never did.
    std::optional<platform::NotificationContent> content;
    foundation::Date handedBackAt;     // when content came, or its time ran out, or it died
    foundation::Date endedAt;          // when all its work was done, as far as it could say
    std::vector<std::string> removed;  // identifiers that it took off the tray
    std::optional<std::int64_t> peakRSSKiB;
};

/// Runs the sample app's service extension on a request, as a process of its own, and waits for its
/// end. Its death, its silence and whatever it says are taken as a system would take them: there is
/// always a result. Throws DeviceError only when no process can be started.
ExtensionResult runServiceExtension(const ProcessStart& start,
                                    const platform::NotificationRequest& request);

}  // namespace tavrolin::device
