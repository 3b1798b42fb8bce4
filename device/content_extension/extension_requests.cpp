#include "device/content_extension/extension_requests.h"

#include "device/device_error.h"
#include "tavrolin/core/logger.h"

namespace tavrolin::device {

void ExpandedNotificationCenter::removeDeliveredNotifications(
    std::vector<std::string> identifiers) {
    if (std::erase(identifiers, identifier_) > 0) {
        requests_.emplace_back("remove");
        try {
            if (!state_.removeFromTray({identifier_}).empty()) didRemove_();
        } catch (const DeviceError& error) {
            log(LogLevel::error, "-[ExpandedNotificationCenter removeDeliveredNotifications:]",
                error.what());
        }
    }
    if (!identifiers.empty()) {
        ForwardingUserNotificationCenter::removeDeliveredNotifications(std::move(identifiers));
    }
}

}  // namespace tavrolin::device
