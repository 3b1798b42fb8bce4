#include "tavrolin/core/corvalen_handler.h"

#include <gmock/gmock.h>

#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/foundation/class_registry.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Adapters = foundation::ClassRegistry<CorvalenPushProtocol>;
using Calls = std::vector<std::string>;

const Calls kAdapterOnly = {"checkIfTokenNeedsToBeSend",
                            "checkIfNotificationPermissionNeedsToBeSend", "processEventsManually",
                            R"(checkIfAttributionNeedsToBeUpdated {"a": 1} me)",
                            "handleOpenOperation [1]"};
const Calls kWithFallback = {R"(handleDeeplinkOnMainQueue app://x {"b": 2})",
                             "recordEventWithId 72 3 (null)",
                             R"(recordEventWithName name 1 {"c": 3})",
                             R"(handleDeeplinkURLString app://y {"d": 4})",
                             "loadCorvalenStore",
                             "handleDoubleOptInWithStatus 2 1 0",
                             "resetDoubleOptIn",
                             "saveDobuleOptIn2Timestamp 17"};

class CorvalenHandlerTest : public MemorySDKTest {
protected:
    // Every forwarded operation once; what the three checks answered.
    std::vector<bool> callEverything() {
        std::vector<bool> answers = {handler_.checkIfTokenNeedsToBeSend(),
                                     handler_.checkIfNotificationPermissionNeedsToBeSend()};
        handler_.processEventsManually();
        answers.push_back(
            handler_.checkIfAttributionNeedsToBeUpdated(Value::dictionary({{"a", 1}}), "me"));
        handler_.handleOpenOperation(Value::array({1}));
        handler_.handleDeeplinkOnMainQueue("app://x", Value::dictionary({{"b", 2}}));
        handler_.recordEventWithId(72, 3, {});
        handler_.recordEventWithName("name", 1, Value::dictionary({{"c", 3}}));
        handler_.handleDeeplinkURLString(
            "app://y", Value::dictionary({{"d", 4}}),
            [](const Value&, bool, const Value&) { ADD_FAILURE() << "never completes"; });
        handler_.loadCorvalenStore();
        handler_.handleDoubleOptIn(2, true, false);
        handler_.resetDoubleOptIn();
        handler_.saveDoubleOptIn2Timestamp(17);
        run();
        return answers;
    }

    CVNPushCorvalenHandler& handler_ = CVNPushCorvalenHandler::sharedInstance();
};

TEST_F(CorvalenHandlerTest, HandsEveryCallToItsAdapter) {
    setAdapter();
    Calls all = kAdapterOnly;
    all.insert(all.end(), kWithFallback.begin(), kWithFallback.end());
    for (const bool answer : {true, false}) {
        coreSDK_->answer = answer;
        EXPECT_EQ(callEverything(), std::vector<bool>(3, answer));
        EXPECT_EQ(coreSDK_->takeCalls(), all);
    }
}

TEST_F(CorvalenHandlerTest, LooksForTheAdaptersClassWithoutOne) {
    EXPECT_FALSE(handler_.isPushNotificationSDKPresent());
    EXPECT_EQ(handler_.getPushNotificationProtocol(), nullptr);
    std::vector<std::shared_ptr<RecordingPushProtocol>> made;
    Adapters::registerClass("PushNotificationAdapter", [&] {
        made.push_back(std::make_shared<RecordingPushProtocol>());
        made.back()->answer = true;
        return made.back();
    });
    EXPECT_TRUE(handler_.isPushNotificationSDKPresent());
    EXPECT_NE(handler_.getPushNotificationProtocol(), nullptr);
    EXPECT_NE(handler_.getPushNotificationSDKInstance(), nullptr);
    ASSERT_EQ(made.size(), 2U);
    made.clear();

    // Five need the adapter itself; the others get a fresh instance each.
    EXPECT_EQ(callEverything(), std::vector<bool>(3, false));
    Calls reached;
    for (const auto& instance : made) {
        ASSERT_EQ(instance->calls.size(), 1U);
        reached.push_back(instance->calls.front());
    }
    EXPECT_EQ(reached, kWithFallback);
    EXPECT_EQ(handler_.corvalenAdapter(), nullptr);

    made.clear();
    setAdapter();
    callEverything();
    EXPECT_THAT(made, IsEmpty()) << "the adapter goes before the class";
}

TEST_F(CorvalenHandlerTest, DropsEveryCallWithoutACoreSDK) {
    EXPECT_EQ(callEverything(), std::vector<bool>(3, false));
    // A class that can't be made is none.
    Adapters::registerClass("PushNotificationAdapter", [] { return nullptr; });
    EXPECT_EQ(callEverything(), std::vector<bool>(3, false));
    EXPECT_THAT(takeLog(), IsEmpty());
}

// --- What the core SDK calls
// ----------------------------------------------------------------------

TEST_F(CorvalenHandlerTest, StartsTheLibraryForItsDelegate) {
    memory_.bundles.mainBundle.setInfoDictionary(Value::dictionary());
    memory_.files.addAppGroup("group.given");
    memory_.notificationCenter.setAuthorizationStatus(2);
    Value silent =
        push("t", Value::dictionary({{"schDt", CVNPushDateUtility::dateStringFromDate({2e9})}}));
    silent.set("aps", Value::dictionary({{"content-available", 1}}));
    handler_.initPushNotificationSDKWith(
        Value::dictionary({{UIApplicationLaunchOptionsRemoteNotificationKey, silent}}), coreSDK_,
        "group.given");
    EXPECT_EQ(handler_.corvalenAdapter(), coreSDK_);
    // Returned before the store is open.
    EXPECT_FALSE(store().storeLoaded());
    run();
    EXPECT_TRUE(store().storeLoaded());
    EXPECT_EQ(store().storeURL()->path(), "/groups/group.given/Tavrolin/CorvalenPushDB.sqlite");
    // Later readers find the group without the Info dictionary.
    EXPECT_EQ(CVNPushPreferencesManager::getCorvalenAppGroup(), Value("group.given"));
    EXPECT_EQ((*memory_.preferences.suite("group.given"))->get("CVNCorvalenAppGroup"),
              Value("group.given"));
    // The permission was evaluated, and the push among the launch options scheduled.
    EXPECT_THAT(coreSDK_->calls, Contains(HasSubstr("recordEventWithId 84 3")));
    EXPECT_THAT(coreSDK_->calls, Contains(HasSubstr("recordEventWithId 12 3")));
    EXPECT_THAT(pending(), ElementsAre("t"));
}

TEST_F(CorvalenHandlerTest, TheFacadesConfigurationComesAfterTheGivenGroup) {
    memory_.files.addAppGroup("group.given");
    handler_.initPushNotificationSDKWith({}, coreSDK_, "group.given");
    run();
    EXPECT_EQ((*memory_.preferences.suite("group.given"))->get("CVNCorvalenAppGroup"),
              Value("group.given"));
    // The facade is made in between and changes over to the group that the Info dictionary names.
    EXPECT_EQ(store().storeURL()->path(), "/groups/group.example/Tavrolin/CorvalenPushDB.sqlite");
}

TEST_F(CorvalenHandlerTest, DoesNothingWithoutADelegate) {
    handler_.setCorvalenAdapter(coreSDK_);
    handler_.initPushNotificationSDKWith(Value::dictionary(), nullptr, "group.given");
    run();
    EXPECT_EQ(handler_.corvalenAdapter(), coreSDK_);
    EXPECT_FALSE(store().storeLoaded());
    EXPECT_TRUE((*memory_.preferences.suite("group.given"))->get("CVNCorvalenAppGroup").isNil());
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(CorvalenHandlerTest, LogsAStartThatRaisesAndStopsThere) {
    handler_.initPushNotificationSDKWith({}, coreSDK_, 7);  // the name is no text
    run();
    EXPECT_EQ(handler_.corvalenAdapter(), coreSDK_);
    EXPECT_FALSE(store().storeLoaded());
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_THAT(takeLog(),
                ElementsAre("(FATAL) CVNPushCorvalenHandler: Unable to initialize CorvalenPush SDK "
                            "-[CVNPushCorvalenHandler "
                            "initPushNotificationSDKWith:andDelegate:with:]"));
}

TEST_F(CorvalenHandlerTest, SchedulesWhatASilentFetchBrought) {
    loadStore();
    const Value later =
        Value::dictionary({{"schDt", CVNPushDateUtility::dateStringFromDate({now() + 3600})}});
    const auto fetch = [&] {
        handler_.setPushVexAndScheduleNotifications(
            Value::array({push("n1"), Value::dictionary({{"cvnSrc", "another"}}), "no dictionary",
                          push("n2")}),
            Value::array({push("s1", later)}));
        run();
    };
    memory_.notificationCenter.setAuthorizationStatus(1);
    fetch();
    EXPECT_THAT(records(), IsEmpty()) << "not authorised";

    memory_.notificationCenter.setAuthorizationStatus(2);
    fetch();
    memory_.dispatch.advance(1);
    EXPECT_THAT(tray(), UnorderedElementsAre("n1", "n2"));
    EXPECT_THAT(pending(), ElementsAre("s1"));
    EXPECT_EQ(record("n1")->source(), Value("PUSH_VEX"));
    EXPECT_EQ(record("n1")->campaignType(), Value("normal"));
    EXPECT_EQ(record("s1")->campaignType(), Value("scheduled"));

    fetch();  // all of it is stored already
    EXPECT_THAT(records(), SizeIs(3));
    memory_.dispatch.advance(1);
    EXPECT_THAT(pending(), ElementsAre("s1"));
}

TEST_F(CorvalenHandlerTest, PassesARequestForPermissionOn) {
    CVNPushPreferences::sharedInstance().setSuitName("group.example");
    CVNPushPreferencesManager::setNotificationAuthorizationOptions(7);
    handler_.requestNotificationPermission();
    run();
    EXPECT_THAT(memory_.notificationCenter.authorizationRequests(), ElementsAre(7U));
}

}  // namespace
}  // namespace tavrolin::tests
