#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// What the core SDK implements and this library calls: events, deep links, the decisions on
/// tokens, permission and attribution, double opt-in. The misspellings are part of the protocol
/// between the two libraries. Threads: calls come on any thread, several at once; none may block
/// for long, and none may raise.
class CorvalenPushProtocol {
public:
    virtual ~CorvalenPushProtocol() = default;

    virtual bool checkIfTokenNeedsToBeSend() = 0;
    virtual bool checkIfNotificationPermissionNeedsToBeSend() = 0;
    /// Sends the events recorded so far.
    virtual void processEventsManually() = 0;
    virtual bool checkIfAttributionNeedsToBeUpdated(
        const foundation::Value& attributionParameters,
        const foundation::Value& withRecievedIdentity) = 0;
    virtual void handleOpenOperation(const foundation::Value& operation) = 0;
    virtual void handleDeeplinkOnMainQueue(const foundation::Value& deeplink,
                                           const foundation::Value& withCustomPayload) = 0;
    virtual void recordEventWithId(std::int64_t eventId, std::int64_t eventType,
                                   const foundation::Value& andPayload) = 0;
    virtual void recordEventWithName(const foundation::Value& eventName, std::int64_t eventType,
                                     const foundation::Value& andPayload) = 0;
    virtual void handleDeeplinkURLString(const foundation::Value& deeplink,
                                         const foundation::Value& customPayload) = 0;
    virtual void loadCorvalenStore() = 0;
    virtual void handleDoubleOptInWithStatus(std::int64_t status, bool forceOptIn,
                                             bool andInstantOptIn) = 0;
    virtual void resetDoubleOptIn() = 0;
    virtual void saveDobuleOptIn2Timestamp(const foundation::Value& timestamp) = 0;
};

/// What this library implements (`CVNPushCorvalenHandler`) and the core SDK calls.
class CVNPushNotificationProtocol {
public:
    virtual ~CVNPushNotificationProtocol() = default;

    /// Starts the library: launch options, the core SDK's adapter, the app group's name.
    virtual void initPushNotificationSDKWith(const foundation::Value& launchOptions,
                                             std::shared_ptr<CorvalenPushProtocol> andDelegate,
                                             const foundation::Value& with) = 0;
    /// Payload dictionaries of normal and of scheduled campaigns, from a silent fetch.
    virtual void setPushVexAndScheduleNotifications(const foundation::Value& normalCampaigns,
                                                    const foundation::Value& with) = 0;
    virtual void requestNotificationPermission() = 0;
};

/// The name under which a core SDK that was not handed over is looked for in
/// `foundation::ClassRegistry<CorvalenPushProtocol>`.
inline constexpr std::string_view kPushNotificationAdapterClassName = "PushNotificationAdapter";

}  // namespace tavrolin
