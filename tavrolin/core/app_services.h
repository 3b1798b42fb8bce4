#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"

namespace tavrolin {

/// The permission and the device token, as the facade asks for them.
class RegistrationService {
public:
    virtual ~RegistrationService() = default;

    /// Evaluates the permission, records it when that is due, and tells the callback (which may be
    /// empty) whether notifications are granted.
    virtual void getCurrentNotificationSettingsWithCompletionHandler(
        std::function<void(bool granted)> completion) = 0;
    /// Option bits as the platform numbers them.
    virtual void registerForPushWithRequestAuthorizationWithOptions(std::uint64_t options) = 0;
};

/// How a background fetch went: 0 new data, 1 no data, 2 failed.
using BackgroundFetchResult = std::int64_t;
inline constexpr BackgroundFetchResult kFetchNewData = 0;
inline constexpr BackgroundFetchResult kFetchNoData = 1;
inline constexpr BackgroundFetchResult kFetchFailed = 2;

/// Local notifications, as the facade asks for them.
class SchedulingService {
public:
    using Models = std::vector<foundation::Ref<CVNNotificationPayloadModel>>;

    virtual ~SchedulingService() = default;

    virtual void scheduleNotification(
        const foundation::Value& payload,
        std::function<void(BackgroundFetchResult)> withCompletionHandler) = 0;
    virtual void checkNotificationsAreScheduled() = 0;
    virtual void getFilterNotifications(
        Models notifications, std::function<void(Models filtered)> withCompletionHandler) = 0;
    virtual void scheduleLocalNotifications(
        Models notifications, std::uint64_t andSource, std::uint64_t andCampaignType,
        std::function<void(bool success)> withCompletionHandler) = 0;
};

/// The facade stands below the rooms that register and schedule, and calls them through these. Each
/// is set once, at start, by whoever puts the library together; what has no service is not done.
struct AppServices {
    RegistrationService* registration = nullptr;
    SchedulingService* scheduling = nullptr;
};

AppServices& appServices();

}  // namespace tavrolin
