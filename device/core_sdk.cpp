#include "device/core_sdk.h"

#include "device/content_values.h"
#include "device/device_error.h"
#include "tavrolin/actions/push_deeplink_helper.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/events/event_vocabulary.h"

namespace tavrolin::device {

using foundation::Value;

CoreSDK::CoreSDK(SystemState& state, platform::Dispatch& dispatch, platform::JSONText& json)
    : calls_(state, dispatch, json), state_(state) {}

bool CoreSDK::answer(std::string_view setting) {
    try {
        return state_.setting(setting) == "true";
    } catch (const DeviceError& error) {
        log(LogLevel::error, "-[CoreSDK answer:]", error.what());
        return false;
    }
}

bool CoreSDK::checkIfTokenNeedsToBeSend() {
    return answer(kSettingTokenNeeded);
}

bool CoreSDK::checkIfNotificationPermissionNeedsToBeSend() {
    return answer(kSettingPermissionNeeded);
}

void CoreSDK::processEventsManually() {
    calls_.keep(kFlush, Value::dictionary());
}

bool CoreSDK::checkIfAttributionNeedsToBeUpdated(const Value& attributionParameters,
                                                 const Value& withRecievedIdentity) {
    calls_.keep(kAttributionCheck,
                Value::dictionary({{"identity", jsonForm(attributionParameters)},
                                   {"received", jsonForm(withRecievedIdentity)}}));
    return answer(kSettingAttributionNeeded);
}

void CoreSDK::handleOpenOperation(const Value& operation) {
    calls_.keep(kOpenOperation, Value::dictionary({{"operation", jsonForm(operation)}}));
}

void CoreSDK::handleDeeplinkOnMainQueue(const Value& deeplink, const Value& withCustomPayload) {
    calls_.keep(kDeeplink, Value::dictionary({{"deeplink", jsonForm(deeplink)},
                                              {"customPayload", jsonForm(withCustomPayload)}}));
    // What is for the app would now be shown by it; the sample app has nothing to show.
    CVNPushDeeplinkHelper::handleDeeplinkURLString(
        deeplink, withCustomPayload,
        [](const Value& /*link*/, bool /*deliverToApp*/, const Value& /*customPayload*/) {});
}

void CoreSDK::recordEventWithId(std::int64_t eventId, std::int64_t eventType,
                                const Value& andPayload) {
    calls_.keep(kEvent,
                Value::dictionary({{"id", eventId},
                                   {"name", EventNameString(static_cast<std::uint64_t>(eventId))},
                                   {"type", eventType},
                                   {"payload", jsonForm(andPayload)}}));
}

void CoreSDK::recordEventWithName(const Value& eventName, std::int64_t eventType,
                                  const Value& andPayload) {
    calls_.keep(kEvent, Value::dictionary({{"name", jsonForm(eventName)},
                                           {"type", eventType},
                                           {"payload", jsonForm(andPayload)}}));
}

void CoreSDK::handleDeeplinkURLString(const Value& deeplink, const Value& customPayload) {
    handleDeeplinkOnMainQueue(deeplink, customPayload);
}

// The stand-in has no store of its own to load.
void CoreSDK::loadCorvalenStore() {}

void CoreSDK::handleDoubleOptInWithStatus(std::int64_t status, bool forceOptIn,
                                          bool andInstantOptIn) {
    calls_.keep(kDoubleOptIn,
                Value::dictionary(
                    {{"status", status}, {"force", forceOptIn}, {"instant", andInstantOptIn}}));
}

void CoreSDK::resetDoubleOptIn() {
    calls_.keep(kDoubleOptInReset, Value::dictionary());
}

void CoreSDK::saveDobuleOptIn2Timestamp(const Value& timestamp) {
    calls_.keep(kDoubleOptIn2Timestamp, Value::dictionary({{"timestamp", jsonForm(timestamp)}}));
}

}  // namespace tavrolin::device
