#include <gmock/gmock.h>

#include <algorithm>

#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/notification_response_service.h"
#include "tavrolin/foundation/notification_center.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Preferences = CVNPushPreferencesManager;
using Service = CVNNotificationResponseService;

class NotificationResponseTest : public MemorySDKTest {
protected:
    NotificationResponseTest() {
        loadStore();
        setAdapter();
        CVNPushPreferences::sharedInstance().setSuitName("group.example");
        CVNPushEventRecorder::recordNotificationDeliveryEventWithId(12, 3, parsed(push("t")), 2, 0);
        run();
        coreSDK_->takeCalls();
        takeLog();
    }

    static Value button(int type, std::string_view link) {
        return Value::dictionary(
            {{"aTyp", type},
             {"actionDeeplink", link},
             {"config", Value::dictionary({{"ctxt", "CODE"}, {"intl", "60"}})}});
    }
    // Two buttons, of these types.
    static Value pushWithButtons(int first, int second) {
        return push(
            "t",
            Value::dictionary(
                {{"deeplink", "app://own"},
                 {"actionButton",
                  Value::array({button(first, "app://b0"), button(second, "app://b1")})},
                 {"carousel", Value::array({Value::dictionary({{"imgDeeplink", "app://c0"}}),
                                            Value::dictionary({{"imgDeeplink", "app://c1"}})})}}));
    }
    // Answers, and gives the link of the click that came of it; empty when none did.
    std::string respond(const Value& userInfo, std::string_view action,
                        std::optional<std::string> text = std::nullopt) {
        platform::NotificationResponse response{std::string(action), {}, std::move(text)};
        response.notification.request.content.userInfo = userInfo;
        Service::didReceiveNotificationResponse(
            response, [](const Value&, bool, const Value&) { ADD_FAILURE() << "never called"; });
        std::string link;
        for (const std::string& call : coreSDK_->calls) {
            constexpr std::string_view kOperation = "handleDeeplinkURLString ";
            if (!call.starts_with(kOperation)) continue;
            EXPECT_EQ(link, "") << "two links";
            link = call.substr(kOperation.size(), call.find(" {") - kOperation.size());
        }
        return link;
    }
    std::string open(const Value& userInfo) {
        return respond(userInfo, platform::kDefaultActionIdentifier);
    }
    int clickEvents() const {
        return static_cast<int>(std::count_if(
            coreSDK_->calls.begin(), coreSDK_->calls.end(),
            [](const auto& call) { return call.starts_with("recordEventWithId 13 3"); }));
    }
};

TEST_F(NotificationResponseTest, OpeningIsAClickThatIsRecordedOnceASecondLater) {
    EXPECT_EQ(open(pushWithButtons(1, 1)), "app://own");
    EXPECT_EQ(Preferences::getApnClickLink(), Value("app://own"));
    EXPECT_THAT(coreSDK_->calls, Contains(HasSubstr(R"("trid": "t")"))) << "the whole payload";
    memory_.dispatch.advance(0.999);
    EXPECT_EQ(clickEvents(), 0);
    memory_.dispatch.advance(0.001);
    EXPECT_EQ(clickEvents(), 1);
    EXPECT_TRUE(record("t")->isRead());

    coreSDK_->takeCalls();
    EXPECT_EQ(open(pushWithButtons(1, 1)), "app://own");
    run();
    EXPECT_EQ(clickEvents(), 0);
}

TEST_F(NotificationResponseTest, WhatIsNoResponseToThisSystemChangesNothing) {
    EXPECT_EQ(respond(pushWithButtons(1, 1), platform::kDismissActionIdentifier), "");
    EXPECT_EQ(open(Value::dictionary({{"cvnSrc", "another"}})), "");
    run();
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_TRUE(Preferences::getApnClickLink().isNil());
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_EQ(open("no dictionary"), "");
}

TEST_F(NotificationResponseTest, TheMenusButtonIsReadFromTheIdentifier) {
    struct Case {
        const char* identifier;
        const char* link;
        bool isLogged;
    };
    const Case cases[] = {
        {"0", "app://b0", false},
        {"1", "app://b1", false},
        {"snooze", "app://b0", false},
        {"", "app://b0", false},
        {" 1x", "app://b1", false},
        {"2", "", true},  // the count itself passes the test, and the look-up fails
        {"-1", "", true},
        {"3", "", false},
        {"99999999999999999999", "", false},
        {"-99999999999999999999", "", true},
    };
    for (const auto& [identifier, link, isLogged] : cases) {
        coreSDK_->takeCalls();
        takeLog();
        EXPECT_EQ(respond(pushWithButtons(1, 4), identifier), link) << identifier;
        const auto lines = takeLog();
        ASSERT_EQ(lines.size(), isLogged ? 1U : 0U) << identifier;
        if (isLogged) {
            EXPECT_THAT(lines.front(), HasSubstr("(FATAL) CVNNotificationResponseHandler: Could "
                                                 "not handle Notification response due to "
                                                 "exception: "));
        }
    }
    EXPECT_THAT(pending(), IsEmpty()) << "the menu doesn't snooze";
    coreSDK_->takeCalls();
    EXPECT_EQ(respond(push("t"), "0"), "") << "no buttons";
    // A type that is no number is any other type; a configuration that is none has no text.
    for (const Value& type : {Value::null(), Value::array({4}), Value("2")}) {
        coreSDK_->takeCalls();
        Value strange = button(1, "app://strange");
        strange.set("aTyp", type);
        strange.set("config", Value::array({1}));
        const Value section = Value::dictionary({{"actionButton", Value::array({strange})}});
        EXPECT_EQ(respond(push("t", section), "0"), "app://strange") << type.description();
    }
}

TEST_F(NotificationResponseTest, TheMenusButtonsCopyAndReply) {
    EXPECT_EQ(respond(pushWithButtons(1, 2), "1"), "app://b1");
    EXPECT_EQ(memory_.pasteboard.string(), "CODE");
    coreSDK_->takeCalls();
    EXPECT_EQ(respond(pushWithButtons(5, 1), "0", "on my way"), "app://b0");
    EXPECT_THAT(coreSDK_->calls, Contains(AllOf(HasSubstr("handleDeeplinkURLString"),
                                                HasSubstr(R"("repliedText": "on my way")"))));
    run();
    EXPECT_THAT(coreSDK_->calls, Contains(HasSubstr("recordEventWithName nc_apn_reply_submitted")));
}

TEST_F(NotificationResponseTest, ATappedCarouselItemIsConsumed) {
    Preferences::setCarouselIndex(1);
    EXPECT_EQ(open(pushWithButtons(1, 1)), "app://c1");
    EXPECT_TRUE(Preferences::getCarouselIndex().isNil());
    coreSDK_->takeCalls();
    EXPECT_EQ(open(pushWithButtons(1, 1)), "app://own");
}

TEST_F(NotificationResponseTest, ATappedButtonActsAndIsConsumed) {
    struct Case {
        const char* what;
        int type;
        std::int64_t index;
        const char* link;  // the first button's: the link goes by the carousel's index
        bool isLogged;
    };
    const Case cases[] = {
        {"copy", 2, 1, "app://b0", false},  {"snooze", 4, 1, "", false},
        {"reply", 5, 1, "app://b0", false}, {"another", 1, 1, "app://b0", false},
        {"beyond", 1, 3, "", false},        {"the count", 1, 2, "", true},
        {"negative", 1, -1, "", true},
    };
    for (const auto& [what, type, index, link, isLogged] : cases) {
        coreSDK_->takeCalls();
        takeLog();
        Preferences::setActionButtonIndex(index);
        EXPECT_EQ(open(pushWithButtons(1, type)), link) << what;
        EXPECT_TRUE(Preferences::getActionButtonIndex().isNil()) << what;
        EXPECT_EQ(takeLog().empty(), !isLogged) << what;
    }
    EXPECT_EQ(memory_.pasteboard.string(), "CODE");
    ASSERT_THAT(pending(), ElementsAre("t"));
    const auto snoozed = memory_.notificationCenter.pending().front();
    EXPECT_EQ(snoozed.trigger->timeInterval(), 60);
    EXPECT_EQ(snoozed.content.userInfo, pushWithButtons(1, 4));
}

TEST_F(NotificationResponseTest, AttributionIsAskedForInLowerCase) {
    CVNPushPreferences::sharedInstance().putString("ME@Example.com", "UserIdentity");
    const auto attribution = std::make_shared<CVNAttributionParameter>();
    attribution->attrIdentity = "Me@example.COM";
    attribution->attrParams = Value::dictionary({{"utm", "x"}});
    for (const bool isWanted : {false, true}) {
        coreSDK_->answer = isWanted;
        CVNNotificationResponseHandler::updateAttributionParameters(attribution);
        EXPECT_THAT(coreSDK_->takeCalls(), ElementsAre("checkIfAttributionNeedsToBeUpdated "
                                                       "me@example.com me@example.com"));
        EXPECT_EQ(Preferences::getUserNotificationAttribution()["utm"],
                  isWanted ? Value("x") : Value());
    }
}

TEST_F(NotificationResponseTest, ASilentDeliveryIsAClick) {
    Service::didReceiveRemoteNotification(pushWithButtons(1, 1), {});
    EXPECT_THAT(coreSDK_->calls, Contains(HasSubstr("handleDeeplinkURLString app://own")));
    run();
    EXPECT_EQ(clickEvents(), 1);
    EXPECT_THAT(takeLog(), Contains(HasSubstr("(VERBOSE) CVNNotificationResponseService: Did "
                                              "receive silent push notification with payload : ")));
    // Neither a link nor a payload of another kind does harm.
    Service::didReceiveRemoteNotification(push("t", Value::dictionary({{"deeplink", 7}})), {});
    Service::didReceiveRemoteNotification("no dictionary", {});
}

TEST_F(NotificationResponseTest, ANotificationInTheForegroundIsPosted) {
    std::vector<Value> notices;
    foundation::NotificationCenter::defaultCenter().addObserver(
        "CorvalenNotificationReceived", [&](const Value& info) { notices.push_back(info); });
    platform::DeliveredNotification notification;
    for (const Value& userInfo :
         {push("t"), Value::dictionary({{"cvnSrc", "another"}}), Value("no dictionary")}) {
        notification.request.content.userInfo = userInfo;
        Service::willPresentForegroundNotification(notification);
    }
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_EQ(notices.front(), parsed(push("t"))->toNSDictionary());
    const auto lines = takeLog();
    EXPECT_THAT(lines, Contains(HasSubstr("(VERBOSE) CVNNotificationResponseService: Handle push "
                                          "from foreground ")));
    EXPECT_THAT(lines, Contains(HasSubstr("(INFO) CVNNotificationResponseService: Corvalen "
                                          "Notification payload received with app in foreground "
                                          ": {")));
    EXPECT_THAT(lines, Contains(HasSubstr("(FATAL) Tavrolin: Push notification source could not be "
                                          "identified due to exception: ")));
}

}  // namespace
}  // namespace tavrolin::tests
