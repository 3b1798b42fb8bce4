#include <gmock/gmock.h>

#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/core/version.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/events/event_recorder.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using platform::BackgroundFetchResult;
using platform::LifecycleEvent;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

constexpr const char* kStart = "-[Tavrolin initSDKWithLaunchOptions:]";

class FacadeTest : public MemorySDKTest {
protected:
    static Tavrolin& facade() { return Tavrolin::sharedInstance(); }

    void start(const Value& launchOptions = {}) {
        facade().initSDKWithLaunchOptions(launchOptions);
        run();
    }
    // The facade's own lines since the last time.
    std::vector<std::string> takeFacadeLog() {
        std::vector<std::string> lines = takeLog();
        std::erase_if(lines, [](const std::string& line) {
            return line.find(") Tavrolin: ") == std::string::npos;
        });
        return lines;
    }
    Value scheduledPush(std::string_view trid) {
        return push(trid, Value::dictionary(
                              {{"schDt", CVNPushDateUtility::dateStringFromDate({now() + 3600})}}));
    }
    void deliver(std::string_view trid) {
        CVNPushEventRecorder::recordNotificationDeliveryEventWithId(12, 3, parsed(push(trid)), 2,
                                                                    0);
        run();
    }
};

TEST_F(FacadeTest, ExportsItsVersions) {
    EXPECT_EQ(kCurrentSDKVersion, "3.5.7");
    EXPECT_EQ(TavrolinVersionNumber, 1.0);
    EXPECT_EQ(TavrolinVersionString, "@(#)PROGRAM:Tavrolin  PROJECT:Tavrolin-1\n");
}

TEST_F(FacadeTest, StartsOnce) {
    (*memory_.preferences.suite("group.example"))->set("CVNPushTokenEncoded", "0a1b");
    facade().initSDKWithLaunchOptions({});
    EXPECT_THAT(takeFacadeLog(), IsEmpty()) << "it returns before the store is open";
    run();
    EXPECT_THAT(
        takeFacadeLog(),
        ElementsAre("(INFO) Tavrolin: Store Loaded " + std::string(kStart),
                    "(SYSTEM) Tavrolin: ✅ ✅ ✅ 👍 Tavrolin SDK - v3.5.7 Initialized 0a1b ✅ ✅ ✅ " +
                        std::string(kStart)));
    start();
    EXPECT_THAT(takeLog(), IsEmpty()) << "a second start does nothing";
    EXPECT_EQ(store().storeURL()->path(), "/groups/group.example/Tavrolin/CorvalenPushDB.sqlite");
}

TEST_F(FacadeTest, TheBannerSaysNullBeforeThereIsAToken) {
    start();
    EXPECT_THAT(takeFacadeLog(),
                Contains(HasSubstr("Tavrolin SDK - v3.5.7 Initialized (null) ✅ ✅ ✅")));
}

TEST_F(FacadeTest, AStoreThatCannotBeOpenedLeavesOneLine) {
    store().setReadOnly(true);  // and there is none yet
    start(Value::dictionary({{"aps", Value::dictionary({{"content-available", 1}})}}));
    EXPECT_THAT(takeFacadeLog(),
                ElementsAre("(ERROR) Tavrolin: Could not Initialize the CorvalenPush SDK due to "
                            "exception " +
                            std::string(kStart)));
    store().setReadOnly(false);  // a start that failed is none
    start();
    EXPECT_TRUE(store().storeLoaded());
    EXPECT_THAT(takeFacadeLog(), Contains(HasSubstr("Store Loaded")));
}

TEST_F(FacadeTest, DeletesWhatHasExpired) {
    start();
    deliver("old");
    memory_.dispatch.advance(30 * 86'400 - 1);
    deliver("new");
    memory_.dispatch.advance(1);
    store().setStoreLoaded(false);  // as a process that starts later finds it
    start();
    ASSERT_THAT(records(), SizeIs(1));
    EXPECT_EQ(records().front()->trid(), Value("new"));
}

TEST_F(FacadeTest, ASilentPushAmongTheLaunchOptionsIsAskedOfTheirWhole) {
    const std::string_view key = UIApplicationLaunchOptionsRemoteNotificationKey;
    const Value aps = Value::dictionary({{"content-available", 1}});
    Value silent = scheduledPush("b");
    silent.set("aps", aps);
    const std::tuple<const char*, Value, std::vector<std::string>> cases[] = {
        {"nothing", {}, {}},
        {"a visible one", Value::dictionary({{key, scheduledPush("a")}}), {}},
        {"a silent one", Value::dictionary({{key, silent}}), {"b"}},
        // The options themselves look silent, and hold no notification to pass on.
        {"themselves", Value::dictionary({{"aps", aps}, {"cvnSrc", "Corvalen"}}), {"b"}},
    };
    for (const auto& [what, launchOptions, expected] : cases) {
        store().setStoreLoaded(false);
        start(launchOptions);
        EXPECT_EQ(pending(), expected) << what;
    }
}

TEST_F(FacadeTest, ASilentPushOpensTheStoreFirst) {
    setAdapter();
    std::vector<BackgroundFetchResult> results;
    const auto receive = [&](const Value& payload) {
        facade().didReceiveRemoteNotification(
            payload, [&](BackgroundFetchResult result) { results.push_back(result); });
        EXPECT_THAT(results, IsEmpty()) << "it returns before";
        run();
        return std::exchange(results, {});
    };
    EXPECT_FALSE(store().storeLoaded());
    EXPECT_THAT(receive(scheduledPush("t")), ElementsAre(platform::kFetchNewData));
    EXPECT_TRUE(store().storeLoaded());
    EXPECT_THAT(pending(), ElementsAre("t"));
    EXPECT_THAT(coreSDK_->calls, Contains("processEventsManually"));

    EXPECT_THAT(receive(scheduledPush("t")), ElementsAre(platform::kFetchFailed)) << "known";
    EXPECT_THAT(receive(push("no date")), IsEmpty()) << "dropped";
    facade().didReceiveRemoteNotification(
        Value::dictionary({{"cvnSrc", "another"}}),
        [&](BackgroundFetchResult result) { results.push_back(result); });
    EXPECT_THAT(results, ElementsAre(platform::kFetchNoData));
}

TEST_F(FacadeTest, CountsWhatIsNeitherReadNorDismissed) {
    EXPECT_EQ(facade().getNotificationBadgeCount(), 0U) << "without a store";
    start();
    for (const char* trid : {"a", "b", "c", "d"})
        deliver(trid);
    CVNPushEventRecorder::recordNotificationClickedEventWithId(13, 3, parsed(push("a")));
    CVNPushEventRecorder::recordNotificationDismissedEventWithPayload(parsed(push("b")));
    run();
    EXPECT_EQ(facade().getNotificationBadgeCount(), 2U);
}

TEST_F(FacadeTest, ReportsAChangedOptInBeforeStoringIt) {
    setAdapter();
    std::vector<bool> storedThen;
    coreSDK_->onCall = [&] { storedThen.push_back(facade().hasOptedPushNotification()); };
    EXPECT_FALSE(facade().hasOptedPushNotification());
    facade().optPushNotification(false);  // absent counts as false
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    facade().optPushNotification(true);
    EXPECT_TRUE(facade().hasOptedPushNotification());
    facade().optPushNotification(true);
    facade().optPushNotification(false);
    EXPECT_FALSE(facade().hasOptedPushNotification());
    EXPECT_THAT(coreSDK_->calls,
                ElementsAre("recordEventWithId 72 3 (null)", "recordEventWithId 73 3 (null)"));
    EXPECT_EQ(storedThen, (std::vector<bool>{false, true}));
}

TEST_F(FacadeTest, KnowsThisSystemsPushes) {
    const std::pair<Value, bool> cases[] = {
        {push("t"), true},
        {Value::dictionary({{"cvnSrc", "CORVALEN"}}), true},
        {Value::dictionary({{"cvnSrc", "corvalen"}}), true},
        {Value::dictionary({{"cvnSrc", "Corvalen "}}), false},
        {Value::dictionary({{"cvnSrc", 7}}), false},
        {Value::dictionary({{"CVNSRC", "Corvalen"}}), false},
        {Value::dictionary(), false},
        {{}, false},
    };
    facade();
    takeLog();
    for (const auto& [payload, expected] : cases)
        EXPECT_EQ(facade().isNotificationFromCorvalen(payload), expected) << payload.description();
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_FALSE(facade().isNotificationFromCorvalen("a text"));
    EXPECT_THAT(takeLog(),
                ElementsAre(AllOf(HasSubstr("(FATAL) Tavrolin: Push notification source could not "
                                            "be identified due to exception: "),
                                  HasSubstr(" -[Tavrolin isNotificationFromCorvalen:]"))));
}

TEST_F(FacadeTest, FollowsTheAppsLife) {
    setAdapter();
    memory_.notificationCenter.setAuthorizationStatus(2);
    start();
    const auto post = [&](LifecycleEvent event) {
        memory_.application.post(event);
        memory_.dispatch.runReady();  // the clock stands still
    };
    post(LifecycleEvent::willEnterForeground);
    EXPECT_THAT(coreSDK_->calls, Contains(HasSubstr("recordEventWithId 84 3")));

    const Payload lost = parsed(scheduledPush("lost"));
    CVNPushEventRecorder::recordNotificationDeliveryEventWithId(12, 3, lost, 2, 1);
    CVNPushEventRecorder::recordNotificationIsScheduledWithPayload(lost);
    run();
    takeLog();
    post(LifecycleEvent::didBecomeActive);
    memory_.dispatch.advance(4.999);
    EXPECT_THAT(pending(), IsEmpty());
    run();
    EXPECT_THAT(pending(), ElementsAre("lost")) << "scheduled again";
    takeLog();

    post(LifecycleEvent::willTerminate);
    EXPECT_THAT(takeLog(), ElementsAre("(INFO) Tavrolin: Handling, when app is terminated "
                                       "-[Tavrolin handleAppWillTerminate:]"));

    deliver("t");
    const auto held =
        CorvalenPushNotificationEvent::fetchAllObjectsInContext(store().viewContext());
    ASSERT_THAT(held, SizeIs(2));
    held.back()->setIsRead(true);
    EXPECT_FALSE(record("t")->isRead());
    post(LifecycleEvent::didEnterBackground);
    EXPECT_TRUE(record("t")->isRead());
}

TEST_F(FacadeTest, ConfiguresItselfFromTheInfoDictionary) {
    EXPECT_EQ(facade().plistAppInfoDictionary()["CorvalenKeys"]["CorvalenAppGroup"],
              Value("group.example"));
    memory_.bundles.mainBundle.setInfoDictionary(Value::dictionary());
    EXPECT_EQ(facade().plistAppInfoDictionary().count(), 1U) << "read once";
    CVNPushPreferencesManager::setOptForPushNotification(true);
    EXPECT_EQ((*memory_.preferences.suite("group.example"))->get("CVNUserOptPushNotification"),
              Value(true));
    EXPECT_TRUE(facade().appGroup().isNil()) << "neither stored nor in the dictionary any more";
}

TEST_F(FacadeTest, SurvivesSettingsThatAreNone) {
    memory_.bundles.mainBundle.setInfoDictionary(Value::dictionary({{"CorvalenKeys", "a text"}}));
    facade();
    EXPECT_THAT(takeLog(),
                Contains(AllOf(HasSubstr("(FATAL) Tavrolin: Fail to configure app settings due to "
                                         "exception "),
                               HasSubstr(" -[Tavrolin configureSettingsWithInfoPlist:]"))));
    start();  // below the documents folder
    EXPECT_EQ(store().storeURL()->path(), "/documents/Tavrolin/CorvalenPushDB.sqlite");
    EXPECT_TRUE(store().storeLoaded());
    takeLog();
    memory_.application.post(LifecycleEvent::willTerminate);
    run();
    EXPECT_THAT(takeLog(), SizeIs(1)) << "and it hears of the app's life all the same";
}

TEST_F(FacadeTest, RegistersWithTheStoredOptionsOrTheGivenOnes) {
    facade();
    CVNPushPreferencesManager::setNotificationAuthorizationOptions(7);
    facade().registerForPushNotificationWithDefaultAuthorizationOptions();
    facade().registerForPushNotificationWithAuthorizationOptions(4);
    run();
    EXPECT_THAT(memory_.notificationCenter.authorizationRequests(), ElementsAre(7U, 4U));
}

TEST_F(FacadeTest, HandsTheTokenOn) {
    setAdapter();
    coreSDK_->answer = true;
    const std::uint8_t bytes[] = {0x0a, 0xff};
    facade().didRegisterForRemoteNotificationsWithDeviceToken(Value::data(bytes));
    facade().didFailToRegisterForRemoteNotificationsWithError(foundation::Error{});
    EXPECT_EQ(CVNPushPreferencesManager::getDevicePushToken(), Value("0aff"));
    EXPECT_THAT(coreSDK_->calls, Contains(HasSubstr("recordEventWithId 87 3")));
}

TEST_F(FacadeTest, InitiatesADoubleOptInOnce) {
    setAdapter();
    facade();
    takeLog();
    facade().initiateNotificationDoubleOptIn();
    run();
    EXPECT_THAT(coreSDK_->takeCalls(), ElementsAre("handleDoubleOptInWithStatus 0 0 0"));
    EXPECT_THAT(takeLog(), IsEmpty());
    facade().initiateNotificationDoubleOptIn();
    run();
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_THAT(takeLog(), ElementsAre("(INFO) Tavrolin: Double Opt-In is already initiated. "
                                       "-[Tavrolin initiateNotificationDoubleOptIn]"));
    facade().showInstantNotificationDoubleOptIn();
    facade().resetNotificationDoubleOptIn();
    run();
    EXPECT_THAT(coreSDK_->calls,
                UnorderedElementsAre("handleDoubleOptInWithStatus 0 0 1", "resetDoubleOptIn"));
}

TEST_F(FacadeTest, HandsResponsesOnWithAndWithoutAStore) {
    setAdapter();
    platform::NotificationResponse response{std::string(platform::kDefaultActionIdentifier), {}};
    response.notification.request.content.userInfo =
        push("t", Value::dictionary({{"deeplink", "app://x"}}));
    const auto hasLink = Contains(HasSubstr("handleDeeplinkURLString app://x"));
    facade().didReceiveNotificationResponse(response);
    EXPECT_THAT(coreSDK_->takeCalls(), hasLink) << "at once, without a store";
    start();
    facade().didReceiveNotificationResponse(response);
    EXPECT_THAT(coreSDK_->takeCalls(), hasLink);
}

}  // namespace
}  // namespace tavrolin::tests
