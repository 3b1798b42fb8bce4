#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "adapters/sqlite/sqlite_record_stores.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/predicate.h"
#include "tavrolin/payload/value_transformer.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tests/store/store_fixture.h"
#include "tests/support/record_stores.h"

namespace tavrolin::tests {
namespace {

using foundation::Date;
using foundation::Predicate;
using foundation::Value;
using Event = CorvalenPushNotificationEvent;
using Service = CVNPushNotificationPersistenceService;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class NotificationPersistenceTest : public StoreFixture {
protected:
    NotificationPersistenceTest() {
        CVNPushCoreDataController::sharedInstance().loadStoreAtPath(
            foundation::URL::fileURLWithPath("/groups/g"), nullptr);
        memory_.dispatch.runUntilIdle();
        context_ = CVNPushCoreDataController::sharedInstance().newBackgroundContext();
    }

    Service::Record add(const Service::Payload& payload) {
        return Service::addNotificationWithPayload(payload, kGatewaySourceAPNS, kCampaignTypeNormal,
                                                   context_);
    }
    Service::Record add(const char* trid) { return add(payloadWithTrid(trid)); }

    // What is stored, as somebody else sees it.
    Service::Records stored() {
        other_ = CVNPushCoreDataController::sharedInstance().newBackgroundContext();
        return Event::fetchAllObjectsInContext(other_);
    }

    std::size_t countOf(std::string_view text) const {
        std::size_t count = 0;
        for (const auto& line : memory_.logSink.lines())
            count += line.find(text) != line.npos ? 1 : 0;
        return count;
    }

    Service::Context context_;
    Service::Context other_;
};

TEST_F(NotificationPersistenceTest, ADeliveryIsStoredOnceWithAllThatThePayloadSays) {
    const auto payload = payloadWithTrid("t1");
    payload->cvnPayload->title = "Hello";
    payload->cvnPayload->scheduledDate = "2024-01-01T00:01:00";
    payload->cvnPayload->ttl = "no date";
    payload->cvnPayload->publishedDate = "2024-01-01T00:00:00";
    payload->cvnPayload->collapseKey = "offers";
    ASSERT_TRUE(add(payload));

    const auto records = stored();
    ASSERT_THAT(records, SizeIs(1));
    const Event& record = *records.front();
    EXPECT_EQ(record.trid(), Value("t1"));
    EXPECT_EQ(record.source(), Value("APNS"));
    EXPECT_EQ(record.campaignType(), Value("normal"));
    EXPECT_EQ(record.currentStatus(), Value("delivered"));
    EXPECT_EQ(record.time(), Value(memory_.dispatch.now()));
    EXPECT_EQ(record.scheduledDate(), Value(Date{1'704'067'260}));
    EXPECT_TRUE(record.ttlDate().isNil());
    EXPECT_EQ(record.publishedDate(), Value(Date{1'704'067'200}));
    EXPECT_EQ(record.collapseKey(), Value("offers"));
    EXPECT_FALSE(record.isRead() || record.isDismissed() || record.alreadyDisplayedOnTray());
    ASSERT_TRUE(record.payload());
    EXPECT_EQ(record.payload()->toNSDictionary(), payload->toNSDictionary());

    const auto again = payloadWithTrid("t1");
    again->cvnPayload->title = "Changed";
    EXPECT_FALSE(add(again));
    EXPECT_EQ(stored().front()->payload()->cvnPayload->title, Value("Hello"));
    EXPECT_EQ(countOf("Inserted a notification"), 1U);
}

TEST_F(NotificationPersistenceTest, WhatCannotBeStoredIsQuietAndLeavesTheStoreAlone) {
    ASSERT_TRUE(add("kept"));
    EXPECT_FALSE(add(payloadWithTrid({})));
    EXPECT_FALSE(add(payloadWithTrid("")));
    EXPECT_FALSE(add(std::make_shared<CVNNotificationPayloadModel>()));
    EXPECT_FALSE(add(Service::Payload()));
    EXPECT_EQ(countOf("Could not add"), 0U);

    const auto wrong = payloadWithTrid("wrong");
    wrong->cvnPayload->collapseKey = Value::array({1});
    for (const auto& payload : {payloadWithTrid(5), payloadWithTrid(Value::array()), wrong}) {
        context_ = CVNPushCoreDataController::sharedInstance().newBackgroundContext();
        EXPECT_FALSE(add(payload));
    }
    EXPECT_EQ(countOf("(DEBUG) CVNPushNotificationPersistenceService: Could not add notification "
                      "due to exception = "),
              3U);
    EXPECT_THAT(stored(), SizeIs(1));
    context_ = nullptr;
    EXPECT_FALSE(add("no context"));
    EXPECT_FALSE(Service::deleteExpiredNotificationsInContext(nullptr));
    EXPECT_THAT(Service::getUnreadNotificationsFromTrayInContext(nullptr), IsEmpty());
}

TEST_F(NotificationPersistenceTest, AnUpdateTakesThePayloadOverAndMarksTheRecord) {
    add("shown");
    add("later");
    const auto payload = payloadWithTrid("shown");
    payload->cvnPayload->title = "New";
    ASSERT_TRUE(Service::updateNotificationWithPayload(payload, true, context_));
    ASSERT_TRUE(Service::updateNotificationWithPayload(payloadWithTrid("later"), false, context_));
    EXPECT_FALSE(Service::updateNotificationWithPayload(payloadWithTrid("new"), true, context_));
    EXPECT_EQ(countOf("Updated the notification payload"), 3U);
    const auto records = stored();
    ASSERT_THAT(records, SizeIs(2));
    EXPECT_TRUE(records[0]->alreadyDisplayedOnTray());
    EXPECT_EQ(records[0]->currentStatus(), Value("delivered"));
    EXPECT_EQ(records[0]->payload()->cvnPayload->title, Value("New"));
    EXPECT_FALSE(records[1]->alreadyDisplayedOnTray());
    EXPECT_EQ(records[1]->currentStatus(), Value("scheduled"));
}

TEST_F(NotificationPersistenceTest, ReadingHappensOnceAndDismissingEachTimeAndBothTakeTheMedia) {
    memory_.files.addAppGroup("g");
    CVNPushFileUtility::appGroupURLWithAppGroup("g");
    const std::string file = "/groups/g/CVN-Notification-Media/a.png";
    const auto payload = payloadWithTrid("t1");
    payload->cvnPayload->mediaURLPath = "file://" + file;
    add(payload);
    const auto withoutMedia = payloadWithTrid("t1");  // what is stored counts, not what came now

    memory_.files.write(file, "picture");
    ASSERT_TRUE(Service::markNotificationAsReadWithPayload(withoutMedia, context_));
    EXPECT_FALSE(memory_.files.fileExists(file));
    EXPECT_TRUE(stored().front()->isRead());
    memory_.files.write(file, "picture");
    EXPECT_FALSE(Service::markNotificationAsReadWithPayload(withoutMedia, context_));
    EXPECT_TRUE(memory_.files.fileExists(file));

    for (int i = 0; i < 2; ++i) {
        memory_.files.write(file, "picture");
        ASSERT_TRUE(Service::markNotificationAsDismissedWithPayload(withoutMedia, context_));
        EXPECT_FALSE(memory_.files.fileExists(file));
        EXPECT_TRUE(stored().front()->isDismissed());
    }
    const auto unknown = payloadWithTrid("unknown");
    EXPECT_FALSE(Service::markNotificationAsReadWithPayload(unknown, context_));
    EXPECT_FALSE(Service::markNotificationAsDismissedWithPayload(unknown, context_));
    EXPECT_EQ(countOf("Marked notification as read"), 1U);
    EXPECT_EQ(countOf("Marked notification as dismissed"), 2U);
}

TEST_F(NotificationPersistenceTest, ListsWhatIsUnreadScheduledAndStored) {
    for (const char* trid : {"b", "a", "c"}) {
        const auto payload = payloadWithTrid(trid);
        payload->cvnPayload->scheduledDate = "2024-01-01T00:01:00";  // in a minute
        add(payload);
    }
    Service::markNotificationAsReadWithPayload(payloadWithTrid("a"), context_);
    Service::updateNotificationWithPayload(payloadWithTrid("c"), false, context_);
    const auto trids = [](const Service::Records& records) {
        std::vector<std::string> result;
        for (const auto& record : records)
            result.push_back(record->trid().description());
        return result;
    };
    EXPECT_THAT(Service::getAllNotificationTridInContext(context_), ElementsAre("b", "a", "c"));
    EXPECT_THAT(trids(Service::getUnreadNotificationsFromTrayInContext(context_)),
                ElementsAre("b", "c"));
    EXPECT_THAT(trids(Service::getAllScheduledNotificationInContext(context_)), ElementsAre("c"));
    EXPECT_EQ(Service::getNotificationFromPayload(payloadWithTrid("a"), context_)->trid(),
              Value("a"));
    memory_.dispatch.advance(60);
    EXPECT_THAT(Service::getAllScheduledNotificationInContext(context_), IsEmpty());
}

TEST_F(NotificationPersistenceTest, RecordsExpireThirtyDaysAfterTheyWereInserted) {
    add("old");
    memory_.dispatch.advance(1);
    add("young");
    memory_.dispatch.advance(2'592'000 - 1);
    EXPECT_TRUE(Service::deleteExpiredNotificationsInContext(context_));
    EXPECT_THAT(Service::getAllNotificationTridInContext(context_), ElementsAre("young"));
    EXPECT_FALSE(stored().empty());
}

TEST_F(NotificationPersistenceTest, TheLatestOfACollapseKeyIsNeverFound) {
    const auto payload = payloadWithTrid("t1");
    payload->cvnPayload->collapseKey = "offers";
    add(payload);
    EXPECT_THAT(Service::getAllLatestNotificationInContext(context_, Value::array({"offers"})),
                IsEmpty());
    EXPECT_EQ(countOf("Could not execute due to exception = "), 1U);
}

TEST_F(NotificationPersistenceTest, AFailedSaveIsLoggedAndTheRecordGivenAllTheSame) {
    add("t1");
    auto& controller = CVNPushCoreDataController::sharedInstance();
    controller.setReadOnly(true);
    controller.loadStoreAtPath(foundation::URL::fileURLWithPath("/groups/g"), nullptr);
    memory_.dispatch.runUntilIdle();
    context_ = controller.newBackgroundContext();
    EXPECT_TRUE(add("t2"));
    EXPECT_TRUE(Service::markNotificationAsReadWithPayload(payloadWithTrid("t1"), context_));
    EXPECT_EQ(countOf("(ERROR) CVNPushManagedObject: Unresolved error "), 2U);
    EXPECT_EQ(countOf("Inserted a notification"), 2U);
    EXPECT_FALSE(add("t1")) << "what is there is still found";
    const auto records = stored();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_FALSE(records.front()->isRead());
}

TEST_F(NotificationPersistenceTest, QueriesThatTheStoreRejectsFallBackAsTheyAreSaidTo) {
    add("b");
    add("a");
    const auto rejected = Predicate::withFormat("colour = 1");
    const foundation::SortDescriptor byTrid{"trid", true};
    EXPECT_THAT(Event::findObjectsWithPredictate(rejected, byTrid, context_), SizeIs(2));
    EXPECT_EQ(countOf("fetch exception in class CorvalenPushNotificationEvent: (null)"), 1U);
    EXPECT_THAT(Event::findObjectsWithPredictate(rejected, context_), IsEmpty());
    EXPECT_EQ(countOf("(FATAL) CVNPushManagedObject: Exception in findObjectsWithPredictate:"), 1U);

    EXPECT_EQ(Event::fetchAllObjectsWithSortDescriptor(byTrid, context_)[0]->trid(), Value("a"));
    EXPECT_EQ(Event::countForObjectsWithPredictate(nullptr, std::nullopt, context_), 2);
    EXPECT_EQ(Event::countForObjectsWithPredictate(nullptr, std::nullopt, nullptr),
              Event::kNotFound);
    const Value read = Value::dictionary({{"isRead", true}});
    EXPECT_EQ(
        Event::batchUpdateRequestForProperties(read, Predicate::withFormat("trid = 'a'"), context_),
        Value(1));
    EXPECT_EQ(countOf("1 objects updated"), 1U);
    EXPECT_TRUE(Event::batchDeleteRequestWithPredictate(nullptr, context_));
    EXPECT_THAT(stored(), IsEmpty());
}

// --- On disk -------------------------------------------------------------------------------------

class StoreOnDiskTest : public testing::Test {
protected:
    // In a process of its own: loads the store and runs the work in a background task.
    pid_t inProcess(const std::function<int(const Service::Context&)>& work) const {
        const pid_t child = fork();
        if (child != 0) return child;
        auto& memory = *new adapters::memory::MemoryPlatform;
        platform::Platform ports = memory.platform();
        ports.recordStores = new adapters::sqlite::SQLiteRecordStores;
        platform::install(ports);
        auto& controller = CVNPushCoreDataController::sharedInstance();
        controller.loadStoreAtPath(foundation::URL::fileURLWithPath(folder_.path()), nullptr);
        memory.dispatch.runUntilIdle();
        int result = 99;
        controller.performBackgroundTask(
            [&](const Service::Context& context) { result = work(context); });
        memory.dispatch.runUntilIdle();
        _exit(result);
    }

    static int resultOf(pid_t child) {
        int status = -1;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static int tridsIn(const Service::Context& context) {
        return static_cast<int>(Service::getAllNotificationTridInContext(context).size());
    }

    TemporaryFolder folder_;
};

TEST_F(StoreOnDiskTest, ProcessesThatDeliverOneNotificationAtOnceLeaveOneRecord) {
    constexpr int kProcesses = 3;
    constexpr int kNotifications = 60;
    // They meet before each one, so that each is contended for.
    void* shared = mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& arrived = *new (shared) std::atomic<int>(0);
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        children.push_back(inProcess([&](const Service::Context& context) {
            int added = 0;
            for (int i = 0; i < kNotifications; ++i) {
                ++arrived;
                while (arrived < kProcesses * (i + 1))
                    std::this_thread::yield();
                const auto payload = payloadWithTrid("t" + std::to_string(i));
                added += Service::addNotificationWithPayload(payload, 2, 0, context) ? 1 : 0;
            }
            return added;
        }));
    }
    int added = 0;
    for (const pid_t child : children)
        added += resultOf(child);
    EXPECT_EQ(added, kNotifications) << "each was delivered by one of them";
    EXPECT_EQ(resultOf(inProcess(tridsIn)), kNotifications);
}

TEST_F(StoreOnDiskTest, WhatWasSavedOutlivesAKilledProcess) {
    const pid_t child = inProcess([](const Service::Context& context) {
        for (const char* trid : {"a", "b"}) {
            Service::addNotificationWithPayload(payloadWithTrid(trid), 2, 0, context);
        }
        Service::markNotificationAsReadWithPayload(payloadWithTrid("a"), context);
        return raise(SIGKILL);
    });
    EXPECT_EQ(resultOf(child), -1);
    EXPECT_EQ(resultOf(inProcess([](const Service::Context& context) {
                  const auto unread = Service::getUnreadNotificationsFromTrayInContext(context);
                  const bool isWhole = tridsIn(context) == 2 && unread.size() == 1 &&
                                       unread.front()->payload() != nullptr;
                  return isWhole ? 0 : 1;
              })),
              0);
}

}  // namespace
}  // namespace tavrolin::tests
