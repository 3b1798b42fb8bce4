#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "tavrolin/core/push_protocols.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// Joins this library to the core SDK: the core SDK starts the library here, and the library
/// reaches the core SDK here.
///
/// A call goes to the adapter that the core SDK handed over; without one, to a fresh instance of
/// the class "PushNotificationAdapter" when there is such a class; otherwise it is dropped. Five
/// calls (`handleOpenOperation`, the three checks, `processEventsManually`) go to the adapter only,
/// and the checks answer false without it. Threads: any.
class CVNPushCorvalenHandler : public CVNPushNotificationProtocol {
public:
    using DeeplinkCompletion =
        std::function<void(const foundation::Value& deeplink, bool deliverToApp,
                           const foundation::Value& customPayload)>;

    static CVNPushCorvalenHandler& sharedInstance();

    std::shared_ptr<CorvalenPushProtocol> corvalenAdapter() const;
    void setCorvalenAdapter(std::shared_ptr<CorvalenPushProtocol> adapter);

    // CVNPushNotificationProtocol. Starting without a delegate does nothing at all.
    void initPushNotificationSDKWith(const foundation::Value& launchOptions,
                                     std::shared_ptr<CorvalenPushProtocol> andDelegate,
                                     const foundation::Value& with) override;
    void setPushVexAndScheduleNotifications(const foundation::Value& normalCampaigns,
                                            const foundation::Value& with) override;
    void requestNotificationPermission() override;

    // One for each operation of CorvalenPushProtocol.
    bool checkIfTokenNeedsToBeSend();
    bool checkIfNotificationPermissionNeedsToBeSend();
    void processEventsManually();
    bool checkIfAttributionNeedsToBeUpdated(const foundation::Value& attributionParameters,
                                            const foundation::Value& withRecievedIdentity);
    void handleOpenOperation(const foundation::Value& operation);
    void handleDeeplinkOnMainQueue(const foundation::Value& deeplink,
                                   const foundation::Value& withCustomPayload);
    void recordEventWithId(std::int64_t eventId, std::int64_t eventType,
                           const foundation::Value& andPayload);
    void recordEventWithName(const foundation::Value& eventName, std::int64_t eventType,
                             const foundation::Value& andPayload);
    /// Never calls its completion: the core SDK's operation has none.
    void handleDeeplinkURLString(const foundation::Value& deeplink,
                                 const foundation::Value& customPayload,
                                 const DeeplinkCompletion& withCompletion);
    void loadCorvalenStore();
    void handleDoubleOptIn(std::int64_t status, bool forceOptIn, bool andInstantOptIn);
    void resetDoubleOptIn();
    void saveDoubleOptIn2Timestamp(const foundation::Value& timestamp);

    /// A new instance of "PushNotificationAdapter" on each call; null when there is no such class.
    std::shared_ptr<CorvalenPushProtocol> getPushNotificationProtocol() const;
    /// Whether that class exists.
    bool isPushNotificationSDKPresent() const;
    /// The same instance as `getPushNotificationProtocol` makes.
    std::shared_ptr<CorvalenPushProtocol> getPushNotificationSDKInstance() const;

private:
    CVNPushCorvalenHandler() = default;
    /// The adapter, or the instance found by its class's name, or null.
    std::shared_ptr<CorvalenPushProtocol> target() const;

    mutable std::mutex mutex_;
    std::shared_ptr<CorvalenPushProtocol> corvalenAdapter_;  // guarded by mutex_
};

}  // namespace tavrolin
