#pragma once

#include <cstdint>
#include <string_view>

#include "device/calls.h"
#include "device/system_state.h"
#include "tavrolin/core/push_protocols.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/json_text.h"

namespace tavrolin::device {

// What the stand-in core SDK answers, as it is kept: true or false.
inline constexpr std::string_view kSettingTokenNeeded = "core.token-needed";
inline constexpr std::string_view kSettingPermissionNeeded = "core.permission-needed";
inline constexpr std::string_view kSettingAttributionNeeded = "core.attribution-needed";

/// The stand-in for the platform's core SDK: keeps durably what it receives, in the order in which
/// it came, and routes deep links by the library's own rules. Threads: any.
class CoreSDK : public CorvalenPushProtocol {
public:
    CoreSDK(SystemState& state, platform::Dispatch& dispatch, platform::JSONText& json);

    bool checkIfTokenNeedsToBeSend() override;
    bool checkIfNotificationPermissionNeedsToBeSend() override;
    void processEventsManually() override;
    bool checkIfAttributionNeedsToBeUpdated(const foundation::Value& attributionParameters,
                                            const foundation::Value& withRecievedIdentity) override;
    void handleOpenOperation(const foundation::Value& operation) override;
    void handleDeeplinkOnMainQueue(const foundation::Value& deeplink,
                                   const foundation::Value& withCustomPayload) override;
    void recordEventWithId(std::int64_t eventId, std::int64_t eventType,
                           const foundation::Value& andPayload) override;
    void recordEventWithName(const foundation::Value& eventName, std::int64_t eventType,
                             const foundation::Value& andPayload) override;
    void handleDeeplinkURLString(const foundation::Value& deeplink,
                                 const foundation::Value& customPayload) override;
    void loadCorvalenStore() override;
    void handleDoubleOptInWithStatus(std::int64_t status, bool forceOptIn,
                                     bool andInstantOptIn) override;
    void resetDoubleOptIn() override;
    void saveDobuleOptIn2Timestamp(const foundation::Value& timestamp) override;

    // The operations as they are kept.
    static constexpr std::string_view kEvent = "event";
    static constexpr std::string_view kFlush = "flush";
    static constexpr std::string_view kAttributionCheck = "attributionCheck";
    static constexpr std::string_view kOpenOperation = "openOperation";
    static constexpr std::string_view kDeeplink = "deeplink";
    static constexpr std::string_view kDoubleOptIn = "doubleOptIn";
    static constexpr std::string_view kDoubleOptInReset = "doubleOptInReset";
    static constexpr std::string_view kDoubleOptIn2Timestamp = "doubleOptIn2Timestamp";

private:
    /// False until it is set otherwise.
    bool answer(std::string_view setting);

    Calls calls_;
    SystemState& state_;
};

}  // namespace tavrolin::device
