#include "tavrolin/actions/action_button_helper.h"

#include <gmock/gmock.h>

#include "tavrolin/events/event_recorder.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Helper = CVNActionButtonHelper;

class ActionButtonHelperTest : public MemorySDKTest {};

TEST_F(ActionButtonHelperTest, CopiesATextAndClearsThePasteboardForNone) {
    Helper::copyPromoCode("SAVE10");
    EXPECT_EQ(memory_.pasteboard.string(), "SAVE10");
    Helper::copyPromoCode(7);
    EXPECT_EQ(memory_.pasteboard.string(), "SAVE10");
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("(FATAL) CVNActionButtonHelper: Not able to copy "
                                                 "code due to exception: ")));
    Helper::copyPromoCode({});
    EXPECT_EQ(memory_.pasteboard.string(), "");
}

TEST_F(ActionButtonHelperTest, AReplyIsReportedAndLeftForTheHost) {
    loadStore();
    setAdapter();
    CVNPushEventRecorder::recordNotificationDeliveryEventWithId(12, 3, parsed(push("t")), 2, 0);
    run();
    const Value custom = Value::dictionary({{"a", 1}});
    const Value replied = Value::dictionary({{"repliedText", "yes"}});
    struct Case {
        std::optional<std::string> text;
        Value before, after;
        const char* reported;  // null: nothing
    };
    const Case cases[] = {
        {"yes", custom, Value::dictionary({{"a", 1}, {"repliedText", "yes"}}), "yes"},
        {"yes", {}, replied, "yes"},
        {std::nullopt, custom, custom, ""},
        {"yes", "no dictionary", "no dictionary", nullptr},
    };
    for (const auto& [text, before, after, reported] : cases) {
        coreSDK_->takeCalls();
        takeLog();
        Payload payload = parsed(push("t"));
        payload->cvnCustomPayload = before;
        platform::NotificationResponse response{"0", {}, text};
        EXPECT_EQ(Helper::recordReplyAndHandleReplyTextWithResponse(response, payload), payload);
        run();
        EXPECT_EQ(payload->cvnCustomPayload, after);
        if (reported != nullptr) {
            EXPECT_THAT(coreSDK_->calls, ElementsAre(HasSubstr(R"("repliedText": ")" +
                                                               std::string(reported) + R"(")")));
            EXPECT_THAT(coreSDK_->calls.front(),
                        HasSubstr("recordEventWithName nc_apn_reply_submitted 1 "));
        } else {
            EXPECT_THAT(coreSDK_->calls, IsEmpty());
            EXPECT_THAT(takeLog(),
                        ElementsAre(HasSubstr("Unable to record the reply event or update the "
                                              "customPayload with reply data due to exception: ")));
        }
    }
}

TEST_F(ActionButtonHelperTest, SnoozesForTheButtonsInterval) {
    struct Case {
        const char* what;
        Value config;
        std::int64_t index;
        Value collapseKey;
        const char* identifier;  // null: none, and a line in the log
        double seconds;
    };
    const auto interval = [](const Value& seconds) {
        return Value::dictionary({{"intl", seconds}});
    };
    const Value key = "key";
    const Case cases[] = {
        {"a text", interval("90"), 1, key, "key", 90},
        {"a number", interval(90), 1, {}, "t", 90},
        {"a fraction", interval("2.9"), 1, {}, "t", 2},
        {"without an interval", Value::dictionary(), 1, key, "key", 1},
        {"zero", interval("0"), 1, key, nullptr, 0},
        {"negative", interval("-5"), 1, key, nullptr, 0},
        {"words", interval("soon"), 1, key, nullptr, 0},
        {"a list", interval(Value::array()), 1, key, nullptr, 0},
        {"a config that is none", "text", 1, key, nullptr, 0},
        {"equal to the count", interval("9"), 2, key, nullptr, 0},
        {"negative index", interval("9"), -1, key, nullptr, 0},
    };
    platform::NotificationContent content;
    content.title = "the title";
    for (const auto& [what, config, index, collapseKey, identifier, seconds] : cases) {
        const Value buttons = Value::array({Value::dictionary({{"config", interval("1000")}}),
                                            Value::dictionary({{"aTyp", 4}, {"config", config}})});
        Value section = Value::dictionary({{"actionButton", buttons}});
        section.setIfPresent("collapseKey", collapseKey);
        const Payload payload = parsed(push("t", section));
        takeLog();
        Helper::configureSnoozeNotificationWith(payload, content, index);
        const auto requests = memory_.notificationCenter.pending();
        if (identifier == nullptr) {
            EXPECT_THAT(requests, IsEmpty()) << what;
            EXPECT_THAT(takeLog(),
                        ElementsAre(HasSubstr("(FATAL) CVNActionButtonHelper: Unable to schedule "
                                              "notification for snooze due to exception: ")))
                << what;
            continue;
        }
        ASSERT_EQ(requests.size(), 1U) << what;
        EXPECT_EQ(requests.front().identifier, identifier) << what;
        EXPECT_EQ(requests.front().trigger->timeInterval(), seconds) << what;
        EXPECT_EQ(requests.front().content.title, content.title);
        memory_.dispatch.advance(seconds);
    }
    Helper::configureSnoozeNotificationWith(nullptr, content, 0);
    EXPECT_THAT(pending(), IsEmpty());
}

TEST_F(ActionButtonHelperTest, OpensTheAppWhenTheButtonSaysSo) {
    const std::pair<Value, bool> cases[] = {
        {Value::dictionary({{"oapp", true}}), true},
        {Value::dictionary({{"oapp", "1"}}), true},
        {Value::dictionary({{"oapp", 0}}), false},
        {Value::dictionary(), false},
        {{}, false},
        {"text", false},
    };
    for (const auto& [config, opens] : cases) {
        CVNActionButton button;
        button.actionConfig = config;
        EXPECT_EQ(Helper::checkAppOpenOnActionButtonClick(button), opens) << config.description();
    }
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("Not able to open app due to exception: ")));
    EXPECT_FALSE(Helper::checkAppOpenOnReplyActionButtonClick({}));
}

}  // namespace
}  // namespace tavrolin::tests
