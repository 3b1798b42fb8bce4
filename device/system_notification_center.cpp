#include "device/system_notification_center.h"

#include <utility>

#include "device/content_values.h"
#include "device/device_error.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::device {

using foundation::Failure;
using foundation::Value;
using platform::DeliveredNotification;
using platform::QueuePriority;

namespace {

constexpr platform::AuthorizationStatus kNotDetermined = 0;
constexpr platform::AuthorizationStatus kDenied = 1;
constexpr platform::AuthorizationStatus kAuthorized = 2;

// Does the work; what can't be done is logged, and given back.
template <class Work>
Failure attempt(std::string_view operation, Work work) {
    try {
        work();
        return std::nullopt;
    } catch (const DeviceError& error) {
        log(LogLevel::error, operation, error.what());
        return foundation::Error{"device", 1, error.what()};
    }
}

}  // namespace

platform::AuthorizationStatus permissionOf(SystemState& state) {
    const auto kept = state.setting(kSettingPermission);
    return kept ? Value(*kept).integerValue() : kNotDetermined;
}

SystemNotificationCenter::SystemNotificationCenter(
    SystemState& state, platform::Dispatch& dispatch, platform::JSONText& json,
    AttachmentStorage storage, std::string ownFiles,
    std::function<void(const std::vector<std::string>&)> didRemove)
    : state_(state),
      dispatch_(dispatch),
      json_(json),
      storage_(std::move(storage)),
      ownFiles_(std::move(ownFiles)),
      didRemove_(std::move(didRemove)) {}

// --- Permission and categories -----------------------------------------------------------------

void SystemNotificationCenter::getAuthorizationStatus(
    std::function<void(platform::AuthorizationStatus)> completion) {
    dispatch_.asyncGlobal(QueuePriority::normal, [this, completion = std::move(completion)] {
        platform::AuthorizationStatus status = kNotDetermined;
        attempt("-[SystemNotificationCenter getAuthorizationStatus:]",
                [&] { status = permissionOf(state_); });
        completion(status);
    });
}

void SystemNotificationCenter::requestAuthorization(std::uint64_t /*options*/,
                                                    std::function<void(bool, Failure)> completion) {
    dispatch_.asyncGlobal(QueuePriority::normal, [this, completion = std::move(completion)] {
        bool isGranted = false;
        const Failure failure = attempt("-[SystemNotificationCenter requestAuthorization:]", [&] {
            platform::AuthorizationStatus status = permissionOf(state_);
            if (status == kNotDetermined) {
                status = kAuthorized;
                state_.setSetting(kSettingPermission, std::to_string(status));
            }
            isGranted = status != kDenied;
        });
        completion(isGranted, failure);
    });
}

void SystemNotificationCenter::setNotificationCategories(
    std::vector<platform::NotificationCategory> categories) {
    attempt("-[SystemNotificationCenter setNotificationCategories:]", [&] {
        const auto text =
            json_.serialise(jsonForm(valueOf(categories)), platform::JSONText::Style::compact);
        if (!text) throw DeviceError(text.error().localizedDescription);
        state_.setSetting(kSettingCategories, *text);
    });
}

// --- The tray ----------------------------------------------------------------------------------

std::vector<DeliveredNotification> SystemNotificationCenter::delivered() {
    std::vector<DeliveredNotification> result;
    for (TrayEntry& entry : state_.tray()) {
        const auto content = json_.parse(entry.content);
        if (!content) continue;
        try {
            result.push_back(
                {{std::move(entry.identifier), contentOf(*content)}, entry.deliveredAt});
        } catch (const foundation::Exception& exception) {
            log(LogLevel::error, "-[SystemNotificationCenter delivered]",
                formatMessage("A notification on the tray can't be read: %@",
                              {exception.reason()}));
        }
    }
    return result;
}

void SystemNotificationCenter::getDeliveredNotifications(
    std::function<void(std::vector<DeliveredNotification>)> completion) {
    dispatch_.asyncGlobal(QueuePriority::normal, [this, completion = std::move(completion)] {
        std::vector<DeliveredNotification> notifications;
        attempt("-[SystemNotificationCenter getDeliveredNotifications:]",
                [&] { notifications = delivered(); });
        completion(std::move(notifications));
    });
}

void SystemNotificationCenter::removeDeliveredNotifications(std::vector<std::string> identifiers) {
    attempt("-[SystemNotificationCenter removeDeliveredNotifications:]", [&] {
        std::vector<std::string> removed;
        for (TrayEntry& entry : state_.removeFromTray(identifiers)) {
            removeFiles(entry.content);
            removed.push_back(std::move(entry.identifier));
        }
        if (!removed.empty() && didRemove_) didRemove_(removed);
    });
}

void SystemNotificationCenter::removeFiles(const std::string& content) {
    if (const auto value = json_.parse(content)) storage_.remove(*value);
}

// --- What waits --------------------------------------------------------------------------------

void SystemNotificationCenter::add(platform::NotificationRequest request) {
    const double seconds = request.trigger ? request.trigger->timeInterval() : 0;
    const foundation::Date fireAt{dispatch_.now().secondsSince1970 + seconds};
    storage_.take(request.content, ownFiles_);
    const Value content = jsonForm(valueOf(request.content));
    SystemState::Displaced displaced;
    try {
        const auto text = json_.serialise(content, platform::JSONText::Style::compact);
        if (!text) throw DeviceError(text.error().localizedDescription);
        displaced = state_.addPending({request.identifier, fireAt, *text});
    } catch (...) {
        storage_.remove(content);
        throw;
    }
    if (displaced.replaced) removeFiles(displaced.replaced->content);
    std::string names;
    for (const PendingEntry& dropped : displaced.dropped) {
        removeFiles(dropped.content);
        names += (names.empty() ? "" : ", ") + dropped.identifier;
    }
    if (names.empty()) return;
    log(LogLevel::warn, "-[SystemNotificationCenter addNotificationRequest:]",
        formatMessage("Only the soonest %lu requests are kept; dropped: %@",
                      {SystemState::kMostPending, names}));
}

void SystemNotificationCenter::addNotificationRequest(platform::NotificationRequest request,
                                                      std::function<void(Failure)> completion) {
    // At once, so that the moment counts from the call and later calls find it.
    const Failure failure = attempt("-[SystemNotificationCenter addNotificationRequest:]",
                                    [&] { add(std::move(request)); });
    if (!completion) return;
    dispatch_.asyncGlobal(QueuePriority::normal,
                          [completion = std::move(completion), failure] { completion(failure); });
}

void SystemNotificationCenter::getPendingNotificationIdentifiers(
    std::function<void(std::vector<std::string>)> completion) {
    dispatch_.asyncGlobal(QueuePriority::normal, [this, completion = std::move(completion)] {
        std::vector<std::string> identifiers;
        attempt("-[SystemNotificationCenter getPendingNotificationIdentifiers:]", [&] {
            for (PendingEntry& entry : state_.pending())
                identifiers.push_back(std::move(entry.identifier));
        });
        completion(std::move(identifiers));
    });
}

}  // namespace tavrolin::device
