#include "tavrolin/core/register_notification_service.h"

#include <gmock/gmock.h>

#include "tavrolin/core/push_double_opt_in_handler.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Calls = std::vector<std::string>;
using Preferences = CVNPushPreferencesManager;
using Service = CVNRegisterNotficationService;

Value data(std::initializer_list<std::uint8_t> bytes) {
    return Value::data({bytes.begin(), bytes.size()});
}

class RegistrationTest : public MemorySDKTest {
protected:
    RegistrationTest() { setAdapter(); }

    // What reaches the core SDK when this token comes.
    Calls tokenComes(const Value& token) {
        Service::didRegisterForRemoteNotificationsWithDeviceToken(token);
        return coreSDK_->takeCalls();
    }
    static void setPermission(const Value& stored) {
        CVNPushPreferences::sharedInstance().setObject(stored, "PermissionForPushNotification");
    }

    CVNPushDoubleOptInHandler& doubleOptIn_ = CVNPushDoubleOptInHandler::sharedInstance();
};

TEST_F(RegistrationTest, KeepsAndReportsATokenThatIsWantedOrNew) {
    static constexpr const char* kAsked = "checkIfTokenNeedsToBeSend";
    for (const Value& nothing : {Value(), data({}), Value("0aff"), Value(7)})
        EXPECT_THAT(tokenComes(nothing), IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());

    EXPECT_THAT(tokenComes(data({0x0A, 0xFF})), ElementsAre(kAsked));
    EXPECT_TRUE(Preferences::getDevicePushToken().isNil());

    coreSDK_->answer = true;
    EXPECT_THAT(tokenComes(data({0x0A, 0xFF})), ElementsAre(kAsked, "recordEventWithId 86 3 {}"));
    EXPECT_EQ(Preferences::getDevicePushToken(), Value("0aff"));
    EXPECT_EQ(Preferences::getBase64EncodedDevicePushToken(), Value("0aff"));
    EXPECT_EQ(Preferences::getDevicePushTokenOld(), Value("0aff"));
    EXPECT_EQ(Preferences::getLastTokenSyncDateTime(), Value(memory_.dispatch.now()));

    coreSDK_->answer = false;
    Preferences::setLastTokenSyncDateTime({});
    EXPECT_THAT(tokenComes(data({0x0A, 0xFF})), ElementsAre(kAsked));
    EXPECT_THAT(tokenComes(data({0x0B})), ElementsAre("recordEventWithId 88 3 {}"));
    EXPECT_EQ(Preferences::getDevicePushToken(), Value("0b"));
    EXPECT_EQ(Preferences::getBase64EncodedDevicePushToken(), Value("0b"));
    EXPECT_EQ(Preferences::getDevicePushTokenOld(), Value("0aff"));
    EXPECT_TRUE(Preferences::getLastTokenSyncDateTime().isNil());

    const std::string generated =
        "(INFO) CVNRegisterNotficationService: Device Token generated with token - 0aff "
        "+[CVNRegisterNotficationService didRegisterForRemoteNotificationsWithDeviceToken:]";
    EXPECT_THAT(takeLog(), ElementsAre(generated, generated, generated,
                                       HasSubstr("Device Token refreshed with token 0b +[")));
}

TEST_F(RegistrationTest, ReportsAFailedRegistration) {
    Service::didFailToRegisterForRemoteNotificationsWithError({"system", 3000, "no network"});
    EXPECT_THAT(coreSDK_->calls, ElementsAre("recordEventWithId 87 3 {}"));
    EXPECT_THAT(takeLog(),
                ElementsAre(HasSubstr("(ERROR) CVNRegisterNotficationService: Remote notification "
                                      "failed with error: Error Domain=system Code=3000")));
}

TEST_F(RegistrationTest, AsksForPermissionAndRegistersWhateverTheAnswer) {
    Service::registerForPushWithRequestAuthorizationWithOptions(7);
    EXPECT_THAT(memory_.notificationCenter.authorizationRequests(), IsEmpty());
    run();
    EXPECT_THAT(memory_.notificationCenter.authorizationRequests(), ElementsAre(7));
    EXPECT_EQ(memory_.application.remoteRegistrations(), 1);
    EXPECT_THAT(coreSDK_->takeCalls(), ElementsAre("recordEventWithId 84 3 {}"));

    memory_.notificationCenter.setAuthorizationStatus(0);
    memory_.notificationCenter.setAnswer(false);
    Service::registerForPushWithRequestAuthorizationWithOptions(0);
    run();
    EXPECT_EQ(memory_.application.remoteRegistrations(), 2);
    EXPECT_THAT(
        coreSDK_->takeCalls(),
        ElementsAre("recordEventWithId 85 3 {}",
                    "saveDobuleOptIn2Timestamp " + Value(memory_.dispatch.now()).description()));
    EXPECT_THAT(takeLog(), IsEmpty());

    memory_.notificationCenter.setAnswer(true, foundation::Error{"system", 1, "described", "why"});
    Service::registerForPushWithRequestAuthorizationWithOptions(0);
    run();
    memory_.notificationCenter.setAnswer(true, foundation::Error{"system", 1, "described"});
    Service::registerForPushWithRequestAuthorizationWithOptions(0);
    run();
    EXPECT_EQ(memory_.application.remoteRegistrations(), 2);
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_THAT(takeLog(),
                ElementsAre(HasSubstr("(ERROR) CVNRegisterNotficationService: "
                                      "RequestAuthorizationWithOptions failed with error: why - "
                                      "described +["),
                            HasSubstr("with error: (null) - described +[")));
}

TEST_F(RegistrationTest, EvaluatesThePermissionOnceTheUserHasDecided) {
    const Value nothing;
    const struct {
        platform::AuthorizationStatus status;
        Value stored;
        bool wanted;  // by the core SDK
        Calls calls;  // with a double opt-in that was initiated
        Value kept;   // permission
        Value repeated;
    } cases[] = {
        {0, nothing, true, {"handleDoubleOptInWithStatus 0 0 0"}, nothing, nothing},
        {0, true, true, {"handleDoubleOptInWithStatus 0 1 0"}, true, nothing},
        {1,
         nothing,
         false,
         {"recordEventWithId 85 3 {}", "handleDoubleOptInWithStatus 1 0 0"},
         false,
         0},
        {1,
         true,
         false,
         {"recordEventWithId 85 3 {}", "handleDoubleOptInWithStatus 1 1 0"},
         false,
         0},
        {2,
         nothing,
         false,
         {"recordEventWithId 84 3 {}", "handleDoubleOptInWithStatus 2 1 0"},
         true,
         0},
        {2, true, false, {"checkIfNotificationPermissionNeedsToBeSend"}, true, nothing},
        {2,
         true,
         true,
         {"checkIfNotificationPermissionNeedsToBeSend", "recordEventWithId 84 3 {}"},
         true,
         1},
        {3,
         false,
         true,
         {"recordEventWithId 84 3 {}", "handleDoubleOptInWithStatus 3 1 0"},
         true,
         0},
        {4, true, false, {"checkIfNotificationPermissionNeedsToBeSend"}, true, nothing},
        {2,
         "yes",
         false,
         {"recordEventWithId 84 3 {}", "handleDoubleOptInWithStatus 2 1 0"},
         true,
         0},
    };
    for (const bool initiated : {true, false}) {
        Preferences::setDoubleOptInInitiatedStatus(initiated);
        for (const auto& each : cases) {
            SCOPED_TRACE(testing::Message() << "status " << each.status << ", stored "
                                            << each.stored.description() << ", " << initiated);
            setPermission(each.stored);
            Preferences::setIsOptInOutRepeated({});
            Preferences::setDateTimeForLastNotificationPermissionEvent({});
            coreSDK_->answer = each.wanted;
            memory_.notificationCenter.setAuthorizationStatus(each.status);
            std::vector<bool> granted;
            Service::getCurrentNotificationSettingsWithCompletionHandler(
                [&](bool isGranted) { granted.push_back(isGranted); });
            run();
            EXPECT_THAT(granted, ElementsAre(each.status > 1));
            Calls calls = each.calls;
            if (!initiated)
                std::erase_if(calls, [](const auto& call) { return call.starts_with("handle"); });
            EXPECT_EQ(coreSDK_->takeCalls(), calls);
            EXPECT_EQ(Preferences::getPermissionForPushNotification(), each.kept);
            EXPECT_EQ(Preferences::getIsOptInOutRepeated(), each.repeated);
            EXPECT_EQ(Preferences::getDateTimeForLastNotificationPermissionEvent(),
                      each.repeated.isNil() ? nothing : Value(memory_.dispatch.now()));
        }
    }
    Service::getCurrentNotificationSettingsWithCompletionHandler({});  // needs no callback
    run();
}

TEST_F(RegistrationTest, StartsADoubleOptInThatIsArmedUnlessExactlyAuthorised) {
    doubleOptIn_.showInstantNotificationDoubleOptIn();
    doubleOptIn_.initiateDoubleOptInProcess(0, true, false);
    run();
    EXPECT_THAT(coreSDK_->calls, IsEmpty());

    memory_.notificationCenter.setAuthorizationStatus(2);
    doubleOptIn_.initiateDoubleOptInProcess(true, true);
    run();
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_THAT(takeLog(),
                ElementsAre("(INFO) CVNPushDoubleOptInHandler: Notification permission is granted. "
                            "-[CVNPushDoubleOptInHandler "
                            "checkPermissionAndProcessDoubleOptIn:andInstantOptIn:]"));

    for (const platform::AuthorizationStatus status : {0, 1, 3, 4}) {
        memory_.notificationCenter.setAuthorizationStatus(status);
        doubleOptIn_.initiateDoubleOptInProcess(true, false);
        doubleOptIn_.showInstantNotificationDoubleOptIn();
        run();
        doubleOptIn_.resetDoubleOptIn();  // stays armed
        doubleOptIn_.initiateDoubleOptInProcess(status, true, true);
        const std::string call = "handleDoubleOptInWithStatus " + std::to_string(status);
        EXPECT_THAT(coreSDK_->takeCalls(),
                    ElementsAre(call + " 1 0", call + " 0 1", "resetDoubleOptIn", call + " 1 1"));
    }
}

}  // namespace
}  // namespace tavrolin::tests
