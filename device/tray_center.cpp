#include "device/tray_center.h"

#include <utility>

#include "device/content_values.h"
#include "device/device_error.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::device {

using platform::DeliveredNotification;

TrayCenter::TrayCenter(SystemState& state, platform::Dispatch& dispatch, platform::JSONText& json,
                       std::function<void(const std::vector<std::string>&)> didRemove)
    : state_(state), dispatch_(dispatch), json_(json), didRemove_(std::move(didRemove)) {}

void TrayCenter::getAuthorizationStatus(
    std::function<void(platform::AuthorizationStatus)> completion) {
    dispatch_.asyncGlobal(platform::QueuePriority::normal,
                          [completion = std::move(completion)] { completion(0); });
}

std::vector<DeliveredNotification> TrayCenter::delivered() {
    std::vector<DeliveredNotification> result;
    for (TrayEntry& entry : state_.tray()) {
        const auto content = json_.parse(entry.content);
        if (!content) continue;
        try {
            result.push_back(
                {{std::move(entry.identifier), contentOf(*content)}, entry.deliveredAt});
        } catch (const foundation::Exception& exception) {
            log(LogLevel::error, "-[TrayCenter delivered]",
                formatMessage("A notification on the tray can't be read: %@",
                              {exception.reason()}));
        }
    }
    return result;
}

void TrayCenter::getDeliveredNotifications(
    std::function<void(std::vector<DeliveredNotification>)> completion) {
    dispatch_.asyncGlobal(
        platform::QueuePriority::normal, [this, completion = std::move(completion)] {
            std::vector<DeliveredNotification> notifications;
            try {
                notifications = delivered();
            } catch (const DeviceError& error) {
                log(LogLevel::error, "-[TrayCenter getDeliveredNotifications:]", error.what());
            }
            completion(std::move(notifications));
        });
}

// Only the app asks, registers and schedules.
void TrayCenter::requestAuthorization(std::uint64_t /*options*/,
                                      std::function<void(bool, foundation::Failure)> completion) {
    dispatch_.asyncGlobal(platform::QueuePriority::normal, [completion = std::move(completion)] {
        completion(false, foundation::Error{"device", 1, "not in this process"});
    });
}

void TrayCenter::setNotificationCategories(
    std::vector<platform::NotificationCategory> /*categories*/) {}

void TrayCenter::addNotificationRequest(platform::NotificationRequest /*request*/,
                                        std::function<void(foundation::Failure)> completion) {
    dispatch_.asyncGlobal(platform::QueuePriority::normal, [completion = std::move(completion)] {
        completion(foundation::Error{"device", 1, "not in this process"});
    });
}

void TrayCenter::getPendingNotificationIdentifiers(
    std::function<void(std::vector<std::string>)> completion) {
    dispatch_.asyncGlobal(platform::QueuePriority::normal,
                          [completion = std::move(completion)] { completion({}); });
}

void TrayCenter::removeDeliveredNotifications(std::vector<std::string> identifiers) {
    try {
        const std::vector<std::string> removed = state_.removeFromTray(identifiers);
        if (!removed.empty() && didRemove_) didRemove_(removed);
    } catch (const DeviceError& error) {
        log(LogLevel::error, "-[TrayCenter removeDeliveredNotifications:]", error.what());
    }
}

}  // namespace tavrolin::device
