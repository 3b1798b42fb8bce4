// What the app's two standing questions to the store cost at 100,000 records, each beside a bare
// prepared query that answers it from the same indices of the same file: the count for the badge,
// and the list of what is scheduled.

#include <sqlite3.h>
#include <cstdlib>

#include <array>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "adapters/sqlite/sqlite_record_stores.h"
#include "benchmarks/filled_store.h"
#include "benchmarks/ratios.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace {

using namespace tavrolin::benchmarks;
using tavrolin::CVNPushCoreDataController;
using tavrolin::CVNPushNotificationPersistenceService;
using tavrolin::Tavrolin;
using tavrolin::foundation::Date;
using tavrolin::foundation::Value;

constexpr std::uint64_t kRecords = 100'000;
constexpr std::uint64_t kScheduled = 60;  // about as many as a system keeps pending
// Of a store that is in use almost all is read or dismissed: 400 are not. The bad case is a user
// who never looks at half of what comes.
constexpr std::uint64_t kRecordsForOneUnread = 250;
constexpr int kTurns = 61;
constexpr double kNextYear = 365 * 86'400;

// The positions of the attributes in a record.
enum Attribute : std::size_t { kIsDismissed = 6, kIsRead = 7, kScheduledDate = 8, kStatus = 10 };

std::vector<Value> rowOf(std::uint64_t number, double now) {
    std::vector<Value> values = row(trid(number));
    if (number % kRecordsForOneUnread != 0) values[number % 4 == 1 ? kIsDismissed : kIsRead] = true;
    // Scattered over the file; of the past ones many more.
    if (number % (kRecords / kScheduled) == 7) {
        values[kScheduledDate] = Date{now + kNextYear};
        values[kStatus] = "scheduled";
    } else if (number % 10 == 3) {
        values[kScheduledDate] = Date{now - kNextYear};
        values[kStatus] = "scheduled";
    }
    return values;
}

// A statement of one's own, prepared once.
class Bare {
public:
    Bare(const std::string& path, const char* sql) {
        check(sqlite3_open_v2(path.c_str(), &database_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                              nullptr));
        check(sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement_,
                                 nullptr));
    }
    ~Bare() {
        sqlite3_finalize(statement_);
        sqlite3_close(database_);
    }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;

    std::size_t count() {
        bind(1, 0);
        bind(2, 0);
        if (sqlite3_step(statement_) != SQLITE_ROW) fail(sqlite3_errmsg(database_));
        const auto result = static_cast<std::size_t>(sqlite3_column_int64(statement_, 0));
        sqlite3_reset(statement_);
        return result;
    }

    // All columns of the rows, as somebody gets them who keeps them.
    std::size_t list(double after) {
        check(sqlite3_bind_double(statement_, 1, after));
        check(sqlite3_bind_text(statement_, 2, "scheduled", -1, SQLITE_STATIC));
        std::vector<Row> rows;
        while (sqlite3_step(statement_) == SQLITE_ROW) {
            Row& row = rows.emplace_back();
            for (std::size_t i = 0; i < row.size(); ++i)
                read(static_cast<int>(i), row[i]);
        }
        check(sqlite3_reset(statement_));
        return rows.size();
    }

private:
    struct Column {
        double number = 0;
        std::string bytes;
    };
    using Row = std::array<Column, 15>;

    void read(int index, Column& column) const {
        switch (sqlite3_column_type(statement_, index)) {
            case SQLITE_INTEGER:
            case SQLITE_FLOAT:
                column.number = sqlite3_column_double(statement_, index);
                break;
            case SQLITE_TEXT:
            case SQLITE_BLOB:
                column.bytes.assign(
                    static_cast<const char*>(sqlite3_column_blob(statement_, index)),
                    static_cast<std::size_t>(sqlite3_column_bytes(statement_, index)));
                break;
            default:
                break;
        }
    }
    void bind(int index, std::int64_t value) {
        check(sqlite3_bind_int64(statement_, index, value));
    }
    void check(int result) {
        if (result != SQLITE_OK) fail(sqlite3_errmsg(database_));
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt* statement_ = nullptr;
};

void letHalfBeUnread(const std::string& path) {
    sqlite3* database = nullptr;
    if (sqlite3_open(path.c_str(), &database) != SQLITE_OK ||
        sqlite3_exec(database,
                     "UPDATE CorvalenPushNotificationEvent SET isRead = _id % 2, isDismissed = 0",
                     nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(sqlite3_errmsg(database));
    }
    sqlite3_close(database);
}

// The turns of both, after they were seen to give the same.
void compare(const std::string& name, int runs, const std::function<std::size_t()>& library,
             const std::function<std::size_t()>& bare) {
    if (library() != bare() || library() == 0) fail(name + " differs");
    const auto times =
        timesInTurns(TimeOf::processor, kTurns, runs, {[&] { bare(); }, [&] { library(); }});
    std::printf("%s: %.1f us (bare %.1f us)\n", name.c_str(), median(times[1]), median(times[0]));
    printRatio(name, medianRatio(times[1], times[0]), 1.5);
}

void compareCounts(const std::string& path, const std::string& name, int runs) {
    Bare bare(path,
              "SELECT count(*) FROM CorvalenPushNotificationEvent "
              "WHERE isRead = ? AND isDismissed = ?");
    compare(
        name, runs, [] { return Tavrolin::sharedInstance().getNotificationBadgeCount(); },
        [&] { return bare.count(); });
}

void compareLists(const std::string& path, double now) {
    Bare bare(path,
              "SELECT _id, _version, trid, source, campaignType, payload, time, "
              "alreadyDisplayedOnTray, isDismissed, isRead, scheduledDate, ttlDate, currentStatus, "
              "publishedDate, collapseKey FROM CorvalenPushNotificationEvent "
              "WHERE scheduledDate > ? AND currentStatus = ?");
    compare(
        "scheduled-list-to-bare", 20,
        [] {
            // A context each, as in the library: background tasks get one of their own.
            const auto context = CVNPushCoreDataController::sharedInstance().newBackgroundContext();
            return CVNPushNotificationPersistenceService::getAllScheduledNotificationInContext(
                       context)
                .size();
        },
        [&] { return bare.list(now); });
}

}  // namespace

int main() {
    std::string folder =
        (std::filesystem::temp_directory_path() / "queries-benchmark-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) fail("no folder");
    const std::string file = folder + "/Tavrolin/CorvalenPushDB.sqlite";
    std::filesystem::create_directory(folder + "/Tavrolin");

    auto& memory = *new tavrolin::adapters::memory::MemoryPlatform;
    memory.logSink.setEnabled(false);
    tavrolin::platform::Platform platform = memory.platform();
    platform.recordStores = new tavrolin::adapters::sqlite::SQLiteRecordStores;
    tavrolin::platform::install(platform);
    const double now = memory.dispatch.now().secondsSince1970;

    fillStore(file, static_cast<int>(kRecords),
              [&](std::uint64_t number) { return rowOf(number, now); });
    CVNPushCoreDataController& store = CVNPushCoreDataController::sharedInstance();
    store.loadStoreAtPath(tavrolin::foundation::URL::fileURLWithPath(folder), nullptr);
    memory.dispatch.runUntilIdle();
    if (!store.storeLoaded()) fail("the store can't be loaded");

    compareCounts(file, "badge-count-to-bare", 200);
    compareLists(file, now);
    letHalfBeUnread(file);
    compareCounts(file, "badge-count-half-unread-to-bare", 2);
    std::filesystem::remove_all(folder);
    return 0;
}
