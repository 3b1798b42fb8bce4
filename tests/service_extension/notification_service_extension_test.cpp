#include "tavrolin/service_extension/notification_service_extension.h"

#include <gmock/gmock.h>

#include "tests/support/memory_sdk.h"
#include "tests/support/pictures.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using platform::NotificationContent;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr std::string_view kReceipt =
    " -[CVNNotificationServiceExtension didReceiveNotificationRequest:withContentHandler:]";

class ServiceExtensionTest : public MemorySDKTest {
protected:
    ServiceExtensionTest() {
        setAdapter();
        memory_.urlSession.setAnswer("https://example.com/a.png", {.body = test::png(2, 2)});
        memory_.urlSession.setAnswer("https://example.com/silent.png", {.neverAnswers = true});
    }

    void receive(const Value& userInfo, const std::string& identifier = "request") {
        NotificationContent content;
        content.title = "as received";
        content.userInfo = userInfo;
        extension_.didReceiveNotificationRequest(
            {identifier, content},
            [this](const NotificationContent& handed) { handed_.push_back(handed); });
    }
    // The extension's own lines since the last time.
    std::vector<std::string> takeExtensionLog() {
        std::vector<std::string> lines = takeLog();
        std::erase_if(lines, [](const std::string& line) {
            return line.find(") CVNNotificationServiceExtension: ") == std::string::npos;
        });
        return lines;
    }
    static Value withMedia(std::string_view trid, const char* name) {
        return push(trid,
                    Value::dictionary({{"mediaUrl", "https://example.com/" + std::string(name)}}));
    }
    static std::string line(std::string_view text) { return std::string(text).append(kReceipt); }

    CVNNotificationServiceExtension extension_;
    std::vector<NotificationContent> handed_;
};

// A core SDK's events reach it in order with what the store holds by then.
TEST_F(ServiceExtensionTest, WorksInItsOrder) {
    std::vector<std::string> order;
    std::vector<double> moments;
    coreSDK_->onCall = [&] {
        order.push_back(coreSDK_->calls.back().substr(0, coreSDK_->calls.back().find(' ', 18)));
        moments.push_back(now());
    };
    const double start = now();
    NotificationContent content;
    content.userInfo = withMedia("t", "a.png");
    extension_.didReceiveNotificationRequest(
        {"request", content}, [&](const NotificationContent& handed) {
            order.emplace_back(handed.attachments.empty() ? "content without media" : "content");
            EXPECT_TRUE(record("t")) << "delivery is recorded first";
            EXPECT_FALSE(record("t")->alreadyDisplayedOnTray()) << "and display afterwards";
        });
    EXPECT_THAT(order, IsEmpty()) << "the store is still being opened";
    run();
    EXPECT_THAT(order, ElementsAre("recordEventWithId 12", "content", "processEventsManually"));
    EXPECT_EQ(coreSDK_->calls.front(),
              R"(recordEventWithId 12 3 {"trid": "t", "isAmplified": 0, "gwSource": 2, "ct": 0, )"
              R"("pnMeta": {}})");
    EXPECT_DOUBLE_EQ(moments.back() - start, 3);
    const Record stored = record("t");
    EXPECT_TRUE(stored->alreadyDisplayedOnTray());
    EXPECT_EQ(stored->source(), Value("APNS"));
    EXPECT_THAT(stored->payload()->cvnPayload->mediaURLPath.string(),
                StartsWith("/groups/group.example/CVN-Notification-Media/"))
        << "with the paths that were filled in meanwhile";
    EXPECT_TRUE(extension_.notificationOperation()->isFinished());
}

TEST_F(ServiceExtensionTest, LogsWhatItReceivesAndThatItLoadedTheStore) {
    receive(push("t"));
    EXPECT_THAT(
        takeExtensionLog(),
        ElementsAre(line("(SYSTEM) CVNNotificationServiceExtension: ✅ ✅ ✅ 👍 Tavrolin NSE "
                         "Called ✅ ✅ ✅"),
                    line("(DEBUG) CVNNotificationServiceExtension: CVNNotificationPayload in json "
                         "string format : {\n  \"cvnSrc\": \"Corvalen\",\n  \"cvnPayload\": {\n"
                         "    \"trid\": \"t\"\n  }\n}")));
    run();
    EXPECT_THAT(takeExtensionLog(),
                ElementsAre(line("(INFO) CVNNotificationServiceExtension: Store Loaded")));
    ASSERT_THAT(handed_, SizeIs(1));
    EXPECT_EQ(handed_[0].title, Value("as received"));

    // With the store open there is no such line, and the work begins at once.
    receive(push("t2"), "second");
    EXPECT_TRUE(extension_.notificationOperation());
    run();
    EXPECT_THAT(takeExtensionLog(), SizeIs(2));
    EXPECT_THAT(handed_, SizeIs(2));
    EXPECT_THAT(records(), SizeIs(2));
}

TEST_F(ServiceExtensionTest, WritesNoJSONForALineThatIsNotPrinted) {
    class CountingJSON : public platform::JSONText {
    public:
        foundation::Expected<Value> parse(std::string_view text) const override {
            return target.parse(text);
        }
        foundation::Expected<std::string> serialise(const Value& value,
                                                    Style style) const override {
            ++calls;
            return target.serialise(value, style);
        }
        adapters::memory::MemoryJSONText target;
        mutable int calls = 0;
    } json;
    platform::Platform ports = memory_.platform();
    ports.json = &json;
    platform::install(ports);
    CVNPushLogger::setDebugLevel(3);
    receive(push("t"));
    EXPECT_THAT(takeExtensionLog(), ElementsAre(HasSubstr("Tavrolin NSE Called")));
    EXPECT_EQ(json.calls, 0);
    CVNPushLogger::setDebugLevel(2);
    receive(push("t"));
    EXPECT_EQ(json.calls, 1);
    CVNPushLogger::setDebugLevel(0);
    platform::install(memory_.platform());
}

TEST_F(ServiceExtensionTest, LeavesForeignPushesAlone) {
    deliverToTray("mine", push("t"));
    for (const Value& userInfo :
         {Value::dictionary({{"aps", Value::dictionary()}}),
          Value::dictionary(
              {{"cvnSrc", "another"}, {"cvnPayload", Value::dictionary({{"trid", "t"}})}}),
          Value()}) {
        SCOPED_TRACE(userInfo.description());
        receive(userInfo);
        run();
        EXPECT_THAT(takeLog(), SizeIs(2));
        EXPECT_THAT(handed_, IsEmpty()) << "not called before the time is over";
        EXPECT_FALSE(store().storeLoaded());
        EXPECT_THAT(coreSDK_->calls, IsEmpty());
        EXPECT_THAT(tray(), ElementsAre("mine"));
        extension_.serviceExtensionTimeWillExpire();
        ASSERT_THAT(handed_, SizeIs(1));
        EXPECT_EQ(handed_[0].userInfo, userInfo);
        EXPECT_EQ(handed_[0].title, Value("as received"));
        handed_.clear();
    }
}

TEST_F(ServiceExtensionTest, AStoreFailureLeavesTheContentToTheTimeOut) {
    store().setReadOnly(true);  // and there is none yet
    deliverToTray("older", push("t"));
    const Value userInfo = withMedia("t", "a.png");
    receive(userInfo);
    takeExtensionLog();
    run();
    EXPECT_THAT(takeExtensionLog(),
                ElementsAre(line("(ERROR) CVNNotificationServiceExtension: Could Initialize the "
                                 "Corvalen SDK due to exception")));
    EXPECT_THAT(handed_, IsEmpty());
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_THAT(memory_.urlSession.requests(), IsEmpty());
    EXPECT_EQ(extension_.notificationOperation(), nullptr);
    EXPECT_THAT(tray(), IsEmpty()) << "the older copy goes all the same";
    extension_.serviceExtensionTimeWillExpire();
    ASSERT_THAT(handed_, SizeIs(1));
    EXPECT_EQ(handed_[0].userInfo, userInfo);
    EXPECT_THAT(handed_[0].attachments, IsEmpty());
}

TEST_F(ServiceExtensionTest, HandsOverWhatThereIsWhenTheTimeRunsOut) {
    const Value items =
        Value::array({Value::dictionary({{"imgUrl", "https://example.com/a.png"}}),
                      Value::dictionary({{"imgUrl", "https://example.com/silent.png"}})});
    const Value userInfo =
        push("t", Value::dictionary({{"type", "CarouselPortrait"}, {"carousel", items}}));
    receive(userInfo);
    run();
    EXPECT_THAT(handed_, IsEmpty());
    EXPECT_THAT(coreSDK_->calls,
                ElementsAre(HasSubstr("recordEventWithId 12"), "processEventsManually"))
        << "events leave although the content is still being prepared";
    const auto operation = extension_.notificationOperation();
    ASSERT_TRUE(operation);
    extension_.serviceExtensionTimeWillExpire();
    EXPECT_TRUE(operation->isCancelled());
    EXPECT_EQ(extension_.notificationOperation(), nullptr);
    ASSERT_THAT(handed_, SizeIs(1));
    EXPECT_THAT(handed_[0].attachments, IsEmpty()) << "a carousel's come all at once";
    EXPECT_EQ(handed_[0].userInfo, userInfo);
    run();
    EXPECT_THAT(handed_, SizeIs(1));
    EXPECT_FALSE(record("t")->alreadyDisplayedOnTray());
}

TEST_F(ServiceExtensionTest, LateContentIsHandedOverASecondTime) {
    memory_.urlSession.setAnswer("https://example.com/late.png",
                                 {.body = test::png(2, 2), .delay = 40});
    receive(withMedia("t", "late.png"));
    memory_.dispatch.advance(29);
    extension_.serviceExtensionTimeWillExpire();
    ASSERT_THAT(handed_, SizeIs(1));
    EXPECT_THAT(handed_[0].attachments, IsEmpty());
    run();
    ASSERT_THAT(handed_, SizeIs(2));
    EXPECT_THAT(handed_[1].attachments, SizeIs(1));
    EXPECT_TRUE(record("t")->alreadyDisplayedOnTray());
    // One that is finished is not cancelled, and what it left is handed over again.
    extension_.serviceExtensionTimeWillExpire();
    ASSERT_THAT(handed_, SizeIs(3));
    EXPECT_THAT(handed_[2].attachments, SizeIs(1));
}

TEST_F(ServiceExtensionTest, TheTimeOutSparesAnOperationThatIsFinished) {
    receive(withMedia("t", "a.png"));
    run();
    const auto operation = extension_.notificationOperation();
    extension_.serviceExtensionTimeWillExpire();
    EXPECT_FALSE(operation->isCancelled());
    EXPECT_EQ(extension_.notificationOperation(), operation);
}

TEST_F(ServiceExtensionTest, DoesWithoutAHandler) {
    extension_.serviceExtensionTimeWillExpire();  // before any request
    NotificationContent content;
    content.userInfo = push("t");
    extension_.didReceiveNotificationRequest({"request", content}, nullptr);
    run();
    extension_.serviceExtensionTimeWillExpire();
    EXPECT_TRUE(record("t")->alreadyDisplayedOnTray());
}

TEST_F(ServiceExtensionTest, FlushesThreeSecondsAfterProcessingBegan) {
    std::vector<double> flushes;
    coreSDK_->onCall = [&] {
        if (coreSDK_->calls.back() == "processEventsManually") flushes.push_back(now());
    };
    const double start = now();
    Value simple = push("simple");
    simple.set("aps", Value::dictionary({{"category", "CorvalenSimpleNotification"}}));
    receive(simple);
    memory_.dispatch.advance(1);
    receive(push("rich"), "second");
    run();
    EXPECT_THAT(flushes, ElementsAre(start + 3, start + 4));
    EXPECT_THAT(handed_, SizeIs(2));
}

TEST_F(ServiceExtensionTest, ReplacesOlderCopiesOnTheTray) {
    const auto keyed = [](std::string_view trid, Value key) {
        Value section;
        section.setIfPresent("collapseKey", std::move(key));
        return push(trid, section);
    };
    struct Case {
        const char* what;
        Value userInfo;
        std::vector<std::string> left;
    };
    const Value withoutTrid = Value::dictionary({{"cvnSrc", "Corvalen"}});
    const Case cases[] = {
        {"the same tracking id", keyed("a", {}), {"b", "c", "foreign", "bare", "c2"}},
        {"the same collapse key", keyed("new", "k"), {"a", "b", "foreign", "bare"}},
        {"both", keyed("a", "k"), {"b", "foreign", "bare"}},
        {"neither", keyed("new", "other"), {"a", "b", "c", "foreign", "bare", "c2"}},
        {"no keys at all", keyed("new", {}), {"a", "b", "c", "foreign", "bare", "c2"}},
        {"nothing to compare", withoutTrid, {"a", "b", "c", "foreign", "bare", "c2"}},
    };
    for (const auto& [what, userInfo, left] : cases) {
        SCOPED_TRACE(what);
        memory_.notificationCenter.removeDeliveredNotifications(tray());
        deliverToTray("a", keyed("a", {}));
        deliverToTray("b", keyed("b", {}));
        deliverToTray("c", keyed("c", "k"));
        deliverToTray("foreign",
                      Value::dictionary({{"cvnPayload", Value::dictionary({{"trid", "a"}})}}));
        deliverToTray("bare", withoutTrid);
        deliverToTray("c2", keyed("c2", "k"));
        extension_.removeDuplicateNotificationFromTray(parsed(userInfo));
        run();
        EXPECT_EQ(tray(), left);
    }
}

TEST_F(ServiceExtensionTest, ALaterRequestTakesThePlaceOfTheEarlierOne) {
    loadStore();
    receive(withMedia("first", "silent.png"));
    const auto first = extension_.notificationOperation();
    receive(withMedia("second", "silent.png"), "second");
    EXPECT_NE(extension_.notificationOperation(), first);
    run();
    extension_.serviceExtensionTimeWillExpire();
    ASSERT_THAT(handed_, SizeIs(1));
    EXPECT_EQ(handed_[0].userInfo["cvnPayload"]["trid"], Value("second"));
    EXPECT_FALSE(first->isCancelled());
}

TEST_F(ServiceExtensionTest, AWalkOverTheTrayThatRaisesIsLoggedAndEnds) {
    class RaisingCenter : public platform::ForwardingUserNotificationCenter {
    public:
        using ForwardingUserNotificationCenter::ForwardingUserNotificationCenter;
        void removeDeliveredNotifications(std::vector<std::string>) override {
            ++calls;
            foundation::Exception::raise(foundation::Exception::kInvalidArgument, "stuck");
        }
        int calls = 0;
    } center(memory_.notificationCenter);
    platform::Platform ports = memory_.platform();
    ports.notificationCenter = &center;
    platform::install(ports);
    deliverToTray("1", push("t"));
    deliverToTray("2", push("t"));
    extension_.removeDuplicateNotificationFromTray(parsed(push("t")));
    run();
    EXPECT_EQ(center.calls, 1);
    EXPECT_THAT(takeExtensionLog(),
                ElementsAre("(FATAL) CVNNotificationServiceExtension: Could not replace the "
                            "notification due to exception: stuck "
                            "-[CVNNotificationServiceExtension "
                            "removeDuplicateNotificationFromTray:]"));
    platform::install(memory_.platform());
}

}  // namespace
}  // namespace tavrolin::tests
