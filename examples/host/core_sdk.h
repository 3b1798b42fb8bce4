#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>

#include "tavrolin/actions/push_deeplink_helper.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/push_protocols.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace host {

using tavrolin::foundation::Value;

/// The app's core SDK: takes the events, decides on tokens, permission and attribution, routes
/// links. A real one sends its events somewhere; this one prints them. Threads: any.
class CoreSDK : public tavrolin::CorvalenPushProtocol {
public:
    /// Shows what a link stands for; runs on the main queue. The payload may be nil.
    using Route = std::function<void(const Value& link, const Value& payload)>;

    /// The one of an extension has nowhere to lead to.
    explicit CoreSDK(Route route = [](const Value&, const Value&) {}) : route_(std::move(route)) {}

    // docs: core-sdk-events
    void recordEventWithId(std::int64_t eventId, std::int64_t, const Value& andPayload) override {
        const std::string name(tavrolin::EventNameString(static_cast<std::uint64_t>(eventId)));
        print(std::to_string(eventId) + (name.empty() ? "" : " " + name), andPayload);
    }
    void recordEventWithName(const Value& eventName, std::int64_t,
                             const Value& andPayload) override {
        print(eventName.description(), andPayload);
    }
    void processEventsManually() override { std::puts("   core SDK: sends its events"); }
    // docs: end

    // docs: core-sdk-decisions
    bool checkIfTokenNeedsToBeSend() override {
        return tavrolin::CVNPushPreferencesManager::getLastTokenSyncDateTime().isNil();
    }
    bool checkIfNotificationPermissionNeedsToBeSend() override { return false; }
    bool checkIfAttributionNeedsToBeUpdated(const Value& attributionParameters,
                                            const Value& withRecievedIdentity) override {
        return attributionParameters.isString() && attributionParameters == withRecievedIdentity;
    }
    // docs: end

    // docs: core-sdk-links
    void handleDeeplinkURLString(const Value& deeplink, const Value& customPayload) override {
        tavrolin::CVNPushDeeplinkHelper::handleDeeplinkURLString(
            deeplink, customPayload,
            [this](const Value& link, bool deliverToApp, const Value& payload) {
                if (deliverToApp) handleDeeplinkOnMainQueue(link, payload);
            });
    }
    void handleDeeplinkOnMainQueue(const Value& deeplink, const Value& withCustomPayload) override {
        tavrolin::platform::current().dispatch->asyncMain(
            [route = route_, deeplink, withCustomPayload] { route(deeplink, withCustomPayload); });
    }
    // docs: end

    // docs: core-sdk-double-opt-in
    void handleDoubleOptInWithStatus(std::int64_t status, bool, bool) override {
        std::printf("   core SDK: asks in its own words (status %lld)\n",
                    static_cast<long long>(status));
    }
    // docs: end
    void resetDoubleOptIn() override {}
    void saveDobuleOptIn2Timestamp(const Value&) override {}

    void handleOpenOperation(const Value&) override {}
    void loadCorvalenStore() override {}

private:
    static void print(const std::string& event, const Value& payload) {
        const std::string trid = payload["trid"] ? " of " + payload["trid"].description() : "";
        std::printf("   core SDK: event %s%s\n", event.c_str(), trid.c_str());
    }

    const Route route_;
};

}  // namespace host
