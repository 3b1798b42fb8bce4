#include "tavrolin/events/event_recorder.h"

#include <gmock/gmock.h>

#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/exception.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Recorder = CVNPushEventRecorder;

class EventRecorderTest : public MemorySDKTest {
protected:
    EventRecorderTest() {
        loadStore();
        setAdapter();
    }

    void deliver(const Payload& payload, std::uint64_t source = kGatewaySourceAPNS,
                 std::uint64_t campaign = kCampaignTypeNormal) {
        Recorder::recordNotificationDeliveryEventWithId(12, 3, payload, source, campaign);
        run();
    }
    static Payload withMeta(std::string_view trid) {
        return parsed(push(trid, Value::dictionary({{"pnMeta", Value::dictionary({{"k", 1}})}})));
    }
};

TEST_F(EventRecorderTest, ADeliveryIsStoredAndReportedOnce) {
    Recorder::recordNotificationDeliveryEventWithId(12, 3, withMeta("t1"), kGatewaySourceAPNS,
                                                    kCampaignTypeNormal);
    EXPECT_THAT(coreSDK_->calls, IsEmpty()) << "it returns before";
    run();
    EXPECT_THAT(coreSDK_->takeCalls(),
                ElementsAre(R"(recordEventWithId 12 3 {"trid": "t1", "isAmplified": 0, )"
                            R"("gwSource": 2, "ct": 0, "pnMeta": {"k": 1}})"));
    ASSERT_THAT(records(), SizeIs(1));
    EXPECT_EQ(record("t1")->source(), Value("APNS"));
    EXPECT_EQ(record("t1")->campaignType(), Value("normal"));

    // What is known already, or has no tracking id, is no delivery.
    deliver(withMeta("t1"), kGatewaySourcePushVex);
    deliver(parsed(push("")));
    deliver(nullptr);
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
    EXPECT_EQ(record("t1")->source(), Value("APNS"));

    // The arguments count, whatever the vocabulary says of them.
    Recorder::recordNotificationDeliveryEventWithId(99, 1, parsed(push("t2")),
                                                    kGatewaySourcePushVex, kCampaignTypeScheduled);
    run();
    EXPECT_THAT(coreSDK_->calls,
                ElementsAre(R"(recordEventWithId 99 1 {"trid": "t2", "isAmplified": 1, )"
                            R"("gwSource": 3, "ct": 1, "pnMeta": {}})"));
}

TEST_F(EventRecorderTest, ADeliveryStoresThePayloadAsItWasHandedOver) {
    const Payload payload = withMeta("t1");
    Recorder::recordNotificationDeliveryEventWithId(12, 3, payload, kGatewaySourceAPNS,
                                                    kCampaignTypeNormal);
    payload->cvnPayload->mediaURLPath = "filled in meanwhile";
    run();
    EXPECT_TRUE(record("t1")->payload()->cvnPayload->mediaURLPath.isNil());
}

TEST_F(EventRecorderTest, AClickIsReportedWithWhatTheStoreKnows) {
    deliver(withMeta("t1"), kGatewaySourcePushVex, kCampaignTypeScheduled);
    coreSDK_->takeCalls();
    const Payload clicked = parsed(push("t1"));

    for (const std::uint64_t id : {12U, 14U, 0U}) {  // not even the store is touched
        Recorder::recordNotificationClickedEventWithId(id, 3, clicked);
        run();
        EXPECT_FALSE(record("t1")->isRead()) << id;
    }
    EXPECT_THAT(coreSDK_->calls, IsEmpty());

    // The meta is the given payload's, source and campaign are the store's.
    Recorder::recordNotificationClickedEventWithId(13, 3, clicked);
    run();
    EXPECT_THAT(coreSDK_->takeCalls(),
                ElementsAre(R"(recordEventWithId 13 3 {"trid": "t1", "isAmplified": 1, )"
                            R"("gwSource": 3, "ct": 1, "pnMeta": {}})"));
    EXPECT_TRUE(record("t1")->isRead());

    Recorder::recordNotificationClickedEventWithId(13, 3, clicked);
    Recorder::recordNotificationClickedEventWithId(13, 3, parsed(push("unknown")));
    run();
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
}

TEST_F(EventRecorderTest, AReplyIsReportedByNameWithoutChangingTheRecord) {
    deliver(withMeta("t1"));
    coreSDK_->takeCalls();
    const auto reply = [&](const Payload& payload, const Value& data) {
        Recorder::recordNotificationRepliedEventWithName(kEventNameReply, 1, payload, data);
        run();
    };
    reply(withMeta("t1"), Value::dictionary({{"repliedText", "on my way"}}));
    reply(parsed(push("t1")), Value::dictionary());  // no meta, no text
    reply(parsed(push("t1")), {});
    reply(parsed(push("unknown")), Value::dictionary({{"repliedText", "lost"}}));
    EXPECT_THAT(coreSDK_->calls,
                ElementsAre(R"(recordEventWithName nc_apn_reply_submitted 1 {"trid": "t1", )"
                            R"("gwSource": 2, "repliedText": "on my way", "pnMeta": {"k": 1}})",
                            R"(recordEventWithName nc_apn_reply_submitted 1 {"trid": "t1", )"
                            R"("gwSource": 2, "repliedText": ""})",
                            R"(recordEventWithName nc_apn_reply_submitted 1 {"trid": "t1", )"
                            R"("gwSource": 2, "repliedText": ""})"));
    EXPECT_FALSE(record("t1")->isRead());
    EXPECT_FALSE(record("t1")->isDismissed());
}

TEST_F(EventRecorderTest, DisplayAndScheduleUpdateTheStoreAndReportNothing) {
    deliver(parsed(push("shown")));
    deliver(parsed(push("planned")));
    coreSDK_->takeCalls();
    const Payload shown = parsed(push("shown", Value::dictionary({{"title", "new"}})));
    Recorder::recordNotificationDisplayedOnTrayWithPayload(shown);
    Recorder::recordNotificationIsScheduledWithPayload(parsed(push("planned")));
    Recorder::recordNotificationDisplayedOnTrayWithPayload(parsed(push("unknown")));
    run();
    EXPECT_TRUE(record("shown")->alreadyDisplayedOnTray());
    EXPECT_EQ(record("shown")->currentStatus(), Value("delivered"));
    EXPECT_EQ(record("shown")->payload()->cvnPayload->title, Value("new"));
    EXPECT_FALSE(record("planned")->alreadyDisplayedOnTray());
    EXPECT_EQ(record("planned")->currentStatus(), Value("scheduled"));
    EXPECT_THAT(records(), SizeIs(2));
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
}

TEST_F(EventRecorderTest, ADismissalIsReportedFromTheStoredRecord) {
    deliver(withMeta("t1"), kGatewaySourcePushVex, kCampaignTypeScheduled);
    coreSDK_->takeCalls();
    Recorder::recordNotificationDismissedEventWithPayload(parsed(push("t1")));
    Recorder::recordNotificationDismissedEventWithPayload(parsed(push("unknown")));
    run();
    EXPECT_THAT(coreSDK_->calls,
                ElementsAre(R"(recordEventWithId 14 3 {"trid": "t1", "isAmplified": 1, )"
                            R"("gwSource": 3, "ct": 1, "pnMeta": {"k": 1}})"));
    EXPECT_TRUE(record("t1")->isDismissed());
}

TEST_F(EventRecorderTest, TheSweepDismissesWhatLeftTheTrayUnread) {
    for (const char* trid : {"gone", "there", "read", "dismissed", "gone too"}) {
        deliver(withMeta(trid));
        Recorder::recordNotificationDisplayedOnTrayWithPayload(withMeta(trid));
    }
    Recorder::recordNotificationClickedEventWithId(13, 3, withMeta("read"));
    Recorder::recordNotificationDismissedEventWithPayload(withMeta("dismissed"));
    run();
    coreSDK_->takeCalls();
    deliverToTray("1", Value::dictionary({{"cvnSrc", "another"}}));
    deliverToTray("2", push("there"));
    // Both belong to this system, but have no tracking id.
    deliverToTray("3", Value::dictionary({{"cvnSrc", "Corvalen"}}));
    deliverToTray("4", Value::dictionary({{"cvnSrc", "Corvalen"}, {"cvnPayload", "text"}}));

    Recorder::recordNotificationDismissedEventWithId(70, 5);
    run();
    EXPECT_THAT(coreSDK_->takeCalls(),
                ElementsAre(R"(recordEventWithId 70 5 {"trid": "gone", "isAmplified": 0, )"
                            R"("gwSource": 2, "ct": 0, "pnMeta": {"k": 1}})",
                            R"(recordEventWithId 70 5 {"trid": "gone too", "isAmplified": 0, )"
                            R"("gwSource": 2, "ct": 0, "pnMeta": {"k": 1}})"));
    EXPECT_TRUE(record("gone")->isDismissed());
    EXPECT_FALSE(record("there")->isDismissed());
    EXPECT_FALSE(record("read")->isDismissed());

    Recorder::recordNotificationDismissedEventWithId(70, 5);
    run();
    EXPECT_THAT(coreSDK_->calls, IsEmpty());
}

TEST_F(EventRecorderTest, FindsWhatLiesOnTheTray) {
    deliverToTray("first", push("a"));
    deliverToTray("foreign", Value::dictionary({{"aps", Value::dictionary()}}));
    deliverToTray("bare", Value::dictionary({{"cvnSrc", "Corvalen"}}));
    deliverToTray("second", push("b"));
    deliverToTray("again", push("a"));
    const auto tray = memory_.notificationCenter.delivered();
    EXPECT_EQ(Recorder::getDeliveredNotificationTridFromTray(tray),
              (std::vector<Value>{"a", "b", "a"}));
    const auto find = [&](const Value& trid) {
        return Recorder::getDeliveredNotificationIdentifierFromTray(tray, trid);
    };
    EXPECT_EQ(find("a"), Value("first"));
    EXPECT_EQ(find("b"), Value("second"));
    EXPECT_TRUE(find("c").isNil());
    EXPECT_TRUE(find({}).isNil()) << "one without a tracking id matches nothing";
    EXPECT_THAT(Recorder::getDeliveredNotificationTridFromTray({}), IsEmpty());
}

TEST(EventRecorderWithoutAStore, DropsEverything) {
    auto& memory = *new adapters::memory::MemoryPlatform;
    platform::install(memory.platform());
    auto coreSDK = std::make_shared<RecordingPushProtocol>();
    CVNPushCorvalenHandler::sharedInstance().setCorvalenAdapter(coreSDK);
    const auto payload = std::make_shared<CVNNotificationPayloadModel>();
    Recorder::recordNotificationDeliveryEventWithId(12, 3, payload, 2, 0);
    Recorder::recordNotificationDismissedEventWithId(14, 3);
    memory.dispatch.runUntilIdle();
    EXPECT_THAT(coreSDK->calls, IsEmpty());
    EXPECT_TRUE(memory.logSink.contains("(FATAL) CVNPushCoreDataController: Store not loaded yet"));
}

}  // namespace
}  // namespace tavrolin::tests
