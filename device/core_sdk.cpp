#include "device/core_sdk.h"

#include <string>

#include "device/content_values.h"
#include "device/device_error.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/events/event_vocabulary.h"

namespace tavrolin::device {

using foundation::Value;

CoreSDK::CoreSDK(SystemState& state, platform::Dispatch& dispatch, platform::JSONText& json)
    : state_(state), dispatch_(dispatch), json_(json) {}

void CoreSDK::keep(std::string_view operation, const Value& arguments) {
    // The library expects no failure from the core SDK: one is said in the log and goes no further.
    try {
        const auto text = json_.serialise(jsonForm(arguments), platform::JSONText::Style::compact);
        if (!text) throw DeviceError(text.error().localizedDescription);
        state_.addCall({std::string(operation), *text, dispatch_.now()});
    } catch (const DeviceError& error) {
        log(LogLevel::error, "-[CoreSDK keep:]",
            formatMessage("Could not keep the call %@: %@", {operation, error.what()}));
    }
}

// A core SDK that has not been told otherwise answers false.
bool CoreSDK::checkIfTokenNeedsToBeSend() {
    return false;
}

bool CoreSDK::checkIfNotificationPermissionNeedsToBeSend() {
    return false;
}

void CoreSDK::processEventsManually() {
    keep(kFlush, Value::dictionary());
}

bool CoreSDK::checkIfAttributionNeedsToBeUpdated(const Value& attributionParameters,
                                                 const Value& withRecievedIdentity) {
    keep(kAttributionCheck, Value::dictionary({{"identity", jsonForm(attributionParameters)},
                                               {"received", jsonForm(withRecievedIdentity)}}));
    return false;
}

void CoreSDK::handleOpenOperation(const Value& operation) {
    keep(kOpenOperation, Value::dictionary({{"operation", jsonForm(operation)}}));
}

void CoreSDK::handleDeeplinkOnMainQueue(const Value& deeplink, const Value& withCustomPayload) {
    keep(kDeeplink, Value::dictionary({{"deeplink", jsonForm(deeplink)},
                                       {"customPayload", jsonForm(withCustomPayload)}}));
}

void CoreSDK::recordEventWithId(std::int64_t eventId, std::int64_t eventType,
                                const Value& andPayload) {
    keep(kEvent, Value::dictionary({{"id", eventId},
                                    {"name", EventNameString(static_cast<std::uint64_t>(eventId))},
                                    {"type", eventType},
                                    {"payload", jsonForm(andPayload)}}));
}

void CoreSDK::recordEventWithName(const Value& eventName, std::int64_t eventType,
                                  const Value& andPayload) {
    keep(kEvent, Value::dictionary({{"name", jsonForm(eventName)},
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
    keep(kDoubleOptIn,
         Value::dictionary(
             {{"status", status}, {"force", forceOptIn}, {"instant", andInstantOptIn}}));
}

void CoreSDK::resetDoubleOptIn() {
    keep(kDoubleOptInReset, Value::dictionary());
}

void CoreSDK::saveDobuleOptIn2Timestamp(const Value& timestamp) {
    keep(kDoubleOptIn2Timestamp, Value::dictionary({{"timestamp", jsonForm(timestamp)}}));
}

}  // namespace tavrolin::device
