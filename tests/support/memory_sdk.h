#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/push_notification_event.h"
#include "tests/support/taken_log.h"

namespace tavrolin::tests {

/// A core SDK that writes down what it is asked, as "operation argument argument", and answers as
/// it is told.
class RecordingPushProtocol : public CorvalenPushProtocol {
public:
    std::vector<std::string> calls;
    bool answer = false;
    std::function<void()> onCall;  // called after each was written down

    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    bool checkIfTokenNeedsToBeSend() override { return asked("checkIfTokenNeedsToBeSend", {}); }
    bool checkIfNotificationPermissionNeedsToBeSend() override {
        return asked("checkIfNotificationPermissionNeedsToBeSend", {});
    }
    void processEventsManually() override { asked("processEventsManually", {}); }
    bool checkIfAttributionNeedsToBeUpdated(const foundation::Value& parameters,
                                            const foundation::Value& identity) override {
        return asked("checkIfAttributionNeedsToBeUpdated", {parameters, identity});
    }
    void handleOpenOperation(const foundation::Value& operation) override {
        asked("handleOpenOperation", {operation});
    }
    void handleDeeplinkOnMainQueue(const foundation::Value& deeplink,
                                   const foundation::Value& payload) override {
        asked("handleDeeplinkOnMainQueue", {deeplink, payload});
    }
    void recordEventWithId(std::int64_t id, std::int64_t type,
                           const foundation::Value& payload) override {
        asked("recordEventWithId", {id, type, payload});
    }
    void recordEventWithName(const foundation::Value& name, std::int64_t type,
                             const foundation::Value& payload) override {
        asked("recordEventWithName", {name, type, payload});
    }
    void handleDeeplinkURLString(const foundation::Value& deeplink,
                                 const foundation::Value& payload) override {
        asked("handleDeeplinkURLString", {deeplink, payload});
    }
    void loadCorvalenStore() override { asked("loadCorvalenStore", {}); }
    void handleDoubleOptInWithStatus(std::int64_t status, bool forced, bool instant) override {
        asked("handleDoubleOptInWithStatus", {status, forced, instant});
    }
    void resetDoubleOptIn() override { asked("resetDoubleOptIn", {}); }
    void saveDobuleOptIn2Timestamp(const foundation::Value& timestamp) override {
        asked("saveDobuleOptIn2Timestamp", {timestamp});
    }

private:
    bool asked(std::string call, std::initializer_list<foundation::Value> arguments) {
        for (const foundation::Value& argument : arguments)
            call.append(" ").append(argument.description());
        calls.push_back(std::move(call));
        if (onCall) onCall();
        return answer;
    }
};

/// The platform in memory, with the app group "group.example" in the preferences.
class MemorySDKTest : public testing::Test {
protected:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;
    using Record = std::shared_ptr<CorvalenPushNotificationEvent>;

    static constexpr const char* kGroupFolder = "/groups/group.example";

    MemorySDKTest() {
        memory_.files.addAppGroup("group.example");
        memory_.bundles.mainBundle.setInfoDictionary(foundation::Value::dictionary(
            {{"CorvalenKeys",
              foundation::Value::dictionary({{"CorvalenAppGroup", "group.example"}})}}));
        platform::install(memory_.platform());
    }

    void loadStore() {
        store().loadStoreAtPath(CVNPushFileUtility::appGroupURLWithAppGroup("group.example"),
                                nullptr);
        run();
        ASSERT_TRUE(store().storeLoaded());
        memory_.logSink.clear();
    }
    /// Lets the core SDK's adapter be the recording one.
    void setAdapter() { CVNPushCorvalenHandler::sharedInstance().setCorvalenAdapter(coreSDK_); }
    void run() { memory_.dispatch.runUntilIdle(); }
    double now() const { return memory_.dispatch.now().secondsSince1970; }

    static CVNPushCoreDataController& store() {
        return CVNPushCoreDataController::sharedInstance();
    }
    /// Everything that is stored, as somebody else sees it.
    std::vector<Record> records() {
        reader_ = store().newBackgroundContext();
        return CorvalenPushNotificationEvent::fetchAllObjectsInContext(reader_);
    }
    Record record(const foundation::Value& trid) {
        for (const Record& each : records()) {
            if (each->trid() == trid) return each;
        }
        return nullptr;
    }

    /// A push of this system with a product section.
    static foundation::Value push(std::string_view trid, foundation::Value section = {}) {
        section.set("trid", trid);
        return foundation::Value::dictionary({{"cvnSrc", "Corvalen"}, {"cvnPayload", section}});
    }
    static Payload parsed(const foundation::Value& push) {
        return CVNNotificationParser::parseNotificationPayloadDictionary(push);
    }
    void deliverToTray(const std::string& identifier, const foundation::Value& userInfo) {
        platform::NotificationContent content;
        content.userInfo = userInfo;
        memory_.notificationCenter.deliver({identifier, content});
    }
    std::vector<std::string> tray() {
        std::vector<std::string> identifiers;
        for (const auto& each : memory_.notificationCenter.delivered())
            identifiers.push_back(each.request.identifier);
        return identifiers;
    }

    /// The identifiers of what waits, soonest first.
    std::vector<std::string> pending() {
        std::vector<std::string> identifiers;
        for (const auto& each : memory_.notificationCenter.pending())
            identifiers.push_back(each.identifier);
        return identifiers;
    }

    std::vector<std::string> takeLog() { return takenLog(memory_.logSink); }

    // Both live as long as the process, as the library's singletons do.
    adapters::memory::MemoryPlatform& memory_ = *new adapters::memory::MemoryPlatform;
    std::shared_ptr<RecordingPushProtocol> coreSDK_ = std::make_shared<RecordingPushProtocol>();

private:
    std::shared_ptr<platform::ManagedObjectContext> reader_;  // records live as long as theirs
};

}  // namespace tavrolin::tests
