#include <gmock/gmock.h>

#include "tavrolin/actions/local_notification_scheduler.h"
#include "tavrolin/actions/notification_helper.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tests/support/counting_record_stores.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Scheduler = CVNLocalNotificationScheduler;

// A clock that can be set back.
class SettableClock : public platform::ForwardingDispatch {
public:
    using ForwardingDispatch::ForwardingDispatch;
    foundation::Date now() const override {
        return {ForwardingDispatch::now().secondsSince1970 + offset};
    }
    double offset = 0;
};

class SchedulingTest : public MemorySDKTest {
protected:
    SchedulingTest() {
        platform::Platform ports = memory_.platform();
        ports.recordStores = &stores_;
        ports.dispatch = &clock_;
        platform::install(ports);
        loadStore();
        setAdapter();
        stores_.takeCommits();
    }

    Value inSeconds(double seconds) const {
        return CVNPushDateUtility::dateStringFromDate({clock_.now().secondsSince1970 + seconds});
    }
    // What the completion was told; "dropped" when it was not called.
    std::string schedule(const Payload& payload, std::uint64_t campaignType) {
        std::string outcome = "dropped";
        Scheduler::scheduleSingleLocalNotificationWithPayload(
            payload, kGatewaySourceAPNS, campaignType,
            [&](bool success) { outcome = success ? "scheduled" : "failed"; });
        run();
        return outcome;
    }
    void store(const Payload& payload, std::uint64_t campaignType) {
        CVNPushEventRecorder::recordNotificationDeliveryEventWithId(12, 3, payload, 2,
                                                                    campaignType);
        run();
    }
    Value status(std::string_view trid) {
        const Record found = record(trid);
        return found ? found->currentStatus() : Value();
    }

    // Both live as long as the process, as the ports must.
    CountingRecordStores& stores_ = *new CountingRecordStores(memory_.recordStores);
    SettableClock& clock_ = *new SettableClock(memory_.dispatch);
};

TEST_F(SchedulingTest, FiresAtTheScheduledDateOrInASecondOrNotAtAll) {
    constexpr double kCentury = 36'525.0 * 86'400;
    const Value none;
    const auto text = [&](const Value& date) {
        return date.kind() == Value::Kind::real ? inSeconds(date.doubleValue()) : date;
    };
    struct Case {
        const char* what;
        std::uint64_t campaignType;
        Value schDt, ttl;  // a real number: so many seconds from now
        double seconds;    // 0: dropped
    };
    const Case cases[] = {
        {"normal", 0, none, none, 1},
        {"normal with dates", 0, 60.0, -60.0, 1},
        {"to come", 1, 3600.0, none, 3600},
        {"to come, expired", 1, 3600.0, -1.0, 3600},
        {"100 years ahead", 1, kCentury, kCentury + 1, kCentury},
        {"now", 1, 0.0, none, 1},
        {"past", 1, -60.0, none, 1},
        {"past, not expired", 1, -60.0, 60.0, 1},
        {"past, unknown expiry", 1, -60.0, "never", 1},
        {"past, expired", 1, -60.0, -1.0, 0},
        {"no date", 1, none, 60.0, 0},
        {"no date that anybody knows", 1, "tomorrow", none, 0},
        {"no text", 1, 17, none, 0},
    };
    for (const auto& [what, campaignType, schDt, ttl, seconds] : cases) {
        Value section = Value::dictionary();
        section.setIfPresent("schDt", text(schDt));
        section.setIfPresent("ttl", text(ttl));
        const std::string outcome = schedule(parsed(push("t", section)), campaignType);
        const auto requests = memory_.notificationCenter.pending();
        ASSERT_THAT(requests, SizeIs(seconds > 0 ? 1 : 0)) << what;
        EXPECT_EQ(outcome, seconds > 0 ? "scheduled" : "dropped") << what;
        if (seconds > 0) {
            EXPECT_EQ(requests.front().trigger->timeInterval(), seconds) << what;
        }
        memory_.dispatch.advance(seconds);
    }
    EXPECT_THAT(takeLog(), Not(Contains(HasSubstr("(FATAL)"))));
}

TEST_F(SchedulingTest, WaitsUnderItsCollapseKeyOrItsTrackingId) {
    const auto withKey = [](std::string_view trid, const Value& key) {
        return parsed(push(trid, Value::dictionary({{"collapseKey", key}})));
    };
    schedule(withKey("a", "key"), 0);
    schedule(withKey("b", "key"), 0);
    schedule(withKey("c", ""), 0);
    schedule(withKey("d", 7), 0);
    EXPECT_THAT(pending(), ElementsAre("key", "c", "d"));
    const auto replaced = memory_.notificationCenter.pending().front();
    EXPECT_EQ(replaced.content.userInfo["cvnPayload"]["trid"], Value("b"));

    takeLog();
    const Payload nameless = parsed(Value::dictionary({{"cvnSrc", "Corvalen"}}));
    for (const Payload& payload : {nameless, parsed(push("")), Payload()})
        EXPECT_EQ(schedule(payload, 0), "failed");
    EXPECT_THAT(pending(), SizeIs(3));
    const auto lines = takeLog();
    EXPECT_THAT(lines, Contains(HasSubstr("Due To Exception : a request needs an identifier")));
    EXPECT_THAT(lines, Contains(HasSubstr("Due To Exception : there is no payload")));
}

TEST_F(SchedulingTest, MarksWhatWasScheduledAndNothingElse) {
    for (const char* trid : {"taken", "refused"})
        store(parsed(push(trid)), 0);
    takeLog();
    EXPECT_EQ(schedule(parsed(push("taken")), 0), "scheduled");
    EXPECT_EQ(status("taken"), Value("scheduled"));
    EXPECT_THAT(takeLog(), Contains(HasSubstr("(DEBUG) CVNLocalNotificationScheduler: Local "
                                              "Notification Scheduled Successfully")));

    foundation::Error full;
    full.localizedDescription = "no room";
    memory_.notificationCenter.setAddFailure(full);
    EXPECT_EQ(schedule(parsed(push("refused")), 0), "failed");
    EXPECT_EQ(status("refused"), Value("delivered"));
    EXPECT_THAT(takeLog(),
                Contains(HasSubstr("(DEBUG) CVNLocalNotificationScheduler: Could Not Schedule "
                                   "Local Notification Due To Exception : no room")));
}

TEST_F(SchedulingTest, ABatchTakesTwoTransactionsHoweverLarge) {
    store(parsed(push("known")), 0);
    coreSDK_->takeCalls();
    stores_.takeCommits();
    for (const int count : {3, 500}) {
        std::vector<Payload> batch;
        const auto trid = [&](int i) { return std::to_string(count) + "-" + std::to_string(i); };
        for (int i = 0; i < count; ++i)
            batch.push_back(parsed(push(trid(i))));
        // In between what can't be stored, or is stored already.
        const Payload bad[] = {
            parsed(push("")),
            parsed(push("known")),
            nullptr,
            batch.front(),
            parsed(push("x", Value::dictionary({{"ttl", 5}}))),
            parsed(Value::dictionary(
                {{"cvnSrc", "Corvalen"}, {"cvnPayload", Value::dictionary({{"trid", 5}})}}))};
        batch.insert(batch.begin() + 2, std::begin(bad), std::end(bad));

        int succeeded = 0;
        Scheduler::scheduleLocalNotifications(batch, kGatewaySourcePushVex, kCampaignTypeNormal,
                                              [&](bool success) { succeeded += success ? 1 : 0; });
        run();
        EXPECT_EQ(stores_.takeCommits(), 2) << count;
        EXPECT_EQ(succeeded, count + 3) << "all that have an identifier";
        const auto calls = coreSDK_->takeCalls();
        EXPECT_THAT(calls, SizeIs(count));
        EXPECT_THAT(calls, Each(HasSubstr("recordEventWithId 12 3")));
        EXPECT_THAT(calls.back(), HasSubstr(trid(count - 1)));
        for (const int i : {0, 2, count - 1})
            EXPECT_EQ(status(trid(i)), Value("scheduled")) << i;
        memory_.dispatch.advance(1);
    }
    EXPECT_THAT(records(), SizeIs(504));
}

TEST_F(SchedulingTest, MarksWhatIsScheduledWhileADownloadHangs) {
    memory_.urlSession.setAnswer("https://a.example/slow.png", {.neverAnswers = true});
    const Value slow = Value::dictionary({{"mediaUrl", "https://a.example/slow.png"}});
    Scheduler::scheduleLocalNotifications({parsed(push("slow", slow)), parsed(push("quick"))},
                                          kGatewaySourcePushVex, kCampaignTypeNormal, {});
    memory_.dispatch.runReady();
    EXPECT_THAT(pending(), ElementsAre("quick"));
    EXPECT_EQ(status("quick"), Value("scheduled"));
    EXPECT_EQ(status("slow"), Value("delivered"));
}

TEST_F(SchedulingTest, ShowsNothingForWhatIsNoText) {
    const Value section =
        Value::dictionary({{"title", 5}, {"body", Value::dictionary({{"a", 1}})}});
    EXPECT_EQ(schedule(parsed(push("t", section)), 0), "scheduled");
    const auto content = memory_.notificationCenter.pending().front().content;
    EXPECT_TRUE(content.title.isNil());
    EXPECT_TRUE(content.body.isNil());
    EXPECT_EQ(content.userInfo["cvnPayload"]["title"], Value(5));
}

TEST_F(SchedulingTest, PayloadsWithACollapseKeyAreStoredAndLookedUpInVain) {
    const Value key = Value::dictionary({{"collapseKey", "k"}});
    bool completed = false;
    Scheduler::scheduleLocalNotifications({parsed(push("a", key)), parsed(push("b", key))},
                                          kGatewaySourcePushVex, kCampaignTypeNormal,
                                          [&](bool) { completed = true; });
    memory_.dispatch.advance(4.999);
    EXPECT_THAT(records(), SizeIs(2));
    takeLog();
    memory_.dispatch.advance(0.001);
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("Could not execute due to exception"))) << "once";
    EXPECT_THAT(pending(), IsEmpty());
    EXPECT_FALSE(completed);
}

TEST_F(SchedulingTest, SchedulesAgainWhatIsNoLongerPending) {
    struct Case {
        const char* trid;
        const char* collapseKey;
        double seconds;  // until its date
        bool isMarked;
        std::vector<std::string> waiting;
        bool isScheduledAgain;
    };
    const Case cases[] = {
        {"lost", "", 60, true, {}, true},
        {"waiting", "", 60, true, {"waiting"}, false},
        {"waiting2", "k2", 60, true, {"waiting2"}, false},
        {"byKey", "k3", 60, true, {"k3"}, true},
        {"byBoth", "k4", 60, true, {"byBoth", "k4"}, true},
        {"delivered only", "", 60, false, {}, false},
        {"past", "", -60, true, {}, false},
    };
    for (const Case& each : cases) {
        const Payload payload =
            parsed(push(each.trid, Value::dictionary({{"schDt", inSeconds(each.seconds)},
                                                      {"collapseKey", each.collapseKey}})));
        store(payload, kCampaignTypeScheduled);
        if (each.isMarked) CVNPushEventRecorder::recordNotificationIsScheduledWithPayload(payload);
        for (const std::string& identifier : each.waiting) {
            memory_.notificationCenter.addNotificationRequest(
                {identifier, {}, platform::TimeIntervalTrigger::withTimeInterval(60)}, {});
        }
    }
    run();
    stores_.takeCommits();
    Scheduler::checkNotificationsAreScheduled();
    run();
    EXPECT_EQ(stores_.takeCommits(), 1);
    std::vector<std::string> scheduledAgain;  // those that have a payload in them
    for (const auto& request : memory_.notificationCenter.pending()) {
        const Value& info = request.content.userInfo;
        if (info) scheduledAgain.emplace_back(info["cvnPayload"]["trid"].string());
    }
    for (const Case& each : cases)
        EXPECT_EQ(testing::Value(scheduledAgain, Contains(each.trid)), each.isScheduledAgain)
            << each.trid;
}

TEST_F(SchedulingTest, AClockThatJumpsBackMakesTheWaitLonger) {
    const Payload payload = parsed(push("t", Value::dictionary({{"schDt", inSeconds(60)}})));
    store(payload, kCampaignTypeScheduled);
    CVNPushEventRecorder::recordNotificationIsScheduledWithPayload(payload);
    run();
    clock_.offset = -86'400;
    Scheduler::checkNotificationsAreScheduled();
    run();
    ASSERT_THAT(pending(), ElementsAre("t"));
    EXPECT_EQ(memory_.notificationCenter.pending().front().trigger->timeInterval(), 86'460);
}

TEST_F(SchedulingTest, FiltersWhatIsStored) {
    for (const char* trid : {"b", "d"})
        store(parsed(push(trid)), 0);
    std::vector<Payload> given = {
        parsed(push("a")), parsed(push("b")),
        nullptr,           parsed(Value::dictionary({{"cvnSrc", "Corvalen"}})),
        parsed(push("d")), parsed(push("e"))};
    std::vector<Payload> kept;
    CVNNotificationHelper::getFilterNotifications(
        given, [&](std::vector<Payload> filtered) { kept = std::move(filtered); });
    run();
    EXPECT_THAT(kept, ElementsAre(given[0], given[3], given[5]));
}

TEST_F(SchedulingTest, ASilentPushTellsTheSystemHowItWent) {
    const auto receive = [&](const Value& payload) {
        platform::BackgroundFetchResult result = -1;
        CVNNotificationHelper::scheduleNotification(
            payload, [&](platform::BackgroundFetchResult given) { result = given; });
        run();
        return result;
    };
    const auto later = [&](std::string_view trid) {
        return push(trid, Value::dictionary({{"schDt", inSeconds(60)}}));
    };
    EXPECT_EQ(receive("no dictionary"), platform::kFetchNoData);
    EXPECT_EQ(receive(later("t")), platform::kFetchNewData);
    EXPECT_THAT(takeLog(), Contains("(INFO) CVNNotificationHelper: Notification Schedule Status = "
                                    "Yes +[CVNNotificationHelper "
                                    "scheduleNotification:withCompletionHandler:]"));
    EXPECT_THAT(coreSDK_->takeCalls(),
                ElementsAre(HasSubstr("recordEventWithId 12 3"), "processEventsManually"));
    EXPECT_EQ(record("t")->source(), Value("APNS"));
    EXPECT_EQ(record("t")->campaignType(), Value("scheduled"));

    EXPECT_EQ(receive(later("t")), platform::kFetchFailed) << "known";
    memory_.notificationCenter.setAddFailure(foundation::Error{});
    EXPECT_EQ(receive(later("u")), platform::kFetchFailed);
    EXPECT_EQ(receive(push("dropped")), -1);
}

}  // namespace
}  // namespace tavrolin::tests
