// What adding a notification to the store costs, at 1,000 and at 100,000 records, beside a bare
// prepared look-up and INSERT of the same row in one SQLite transaction, on a file with the same
// schema, indices and settings.

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "adapters/sqlite/sqlite_record_stores.h"
#include "tavrolin/payload/value_transformer.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace {

using tavrolin::CorvalenPushNotificationEvent;
using tavrolin::CVNNotificationPayloadModel;
using tavrolin::CVNNotificationPayloadModelValueTransformer;
using tavrolin::CVNPayload;
using tavrolin::CVNPushNotificationPersistenceService;
using tavrolin::foundation::Ref;
using tavrolin::foundation::Value;
using tavrolin::platform::ManagedObjectModel;
using tavrolin::platform::RecordStore;
using tavrolin::platform::StoreDescription;

constexpr int kFew = 1'000;
constexpr int kMany = 100'000;

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "store benchmark: %s\n", what.c_str());
    std::exit(1);
}

// As random as the identifiers of real campaigns, and the same in each run.
std::string trid(std::uint64_t number) {
    std::uint64_t x = (number + 1) * 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30U)) * 0xbf58476d1ce4e5b9ULL;
    x ^= x >> 27U;
    char text[48];
    std::snprintf(text, sizeof text, "%016llx-%08llu-campaign", static_cast<unsigned long long>(x),
                  static_cast<unsigned long long>(number));
    return text;
}

Ref<CVNNotificationPayloadModel> payload(const std::string& id) {
    auto model = std::make_shared<CVNNotificationPayloadModel>();
    model->source = "Corvalen";
    model->cvnPayload = std::make_shared<CVNPayload>();
    model->cvnPayload->trid = id;
    model->cvnPayload->collapseKey = "offers";
    model->cvnPayload->publishedDate = "2024-01-01T00:00:00";
    model->cvnPayload->body = std::string(2'500, 'b');  // an archive of some 2.7 KB
    return model;
}

ManagedObjectModel& model() {
    static ManagedObjectModel instance{{CorvalenPushNotificationEvent::entityDescription()}};
    return instance;
}

std::vector<Value> row(const std::string& id) {
    const Value archive =
        CVNNotificationPayloadModelValueTransformer::transformedValue(*payload(id));
    const tavrolin::foundation::Date now{1'704'067'200};
    return {id,    "APNS", "normal", archive,     now, false,   false,
            false, {},     {},       "delivered", now, "offers"};
}

// A file that was filled and never added to: each contender gets a copy.
std::string filledFile(const std::string& folder, int records) {
    const std::string path = folder + "/filled-" + std::to_string(records) + ".sqlite";
    StoreDescription description;
    description.url = tavrolin::foundation::URL::fileURLWithPath(path);
    auto store = tavrolin::adapters::sqlite::SQLiteRecordStores().open(model(), description);
    if (!store) fail(store.error().description());
    if ((*store)->begin()) fail("begin");
    for (int i = 0; i < records; ++i) {
        if (!(*store)->insert(model().entities.front(), row(trid(static_cast<std::uint64_t>(i))))) {
            fail("insert");
        }
    }
    if ((*store)->commit()) fail("commit");
    return path;
}

// Identifiers beyond those that the files were filled with.
class Identifiers {
public:
    std::string next() { return trid(1'000'000 + count_++); }

private:
    std::uint64_t count_ = 0;
};

class Store {
public:
    Store(const std::string& filled, const std::string& path) {
        std::filesystem::copy_file(filled, path);
        container_ = std::make_unique<tavrolin::platform::PersistentContainer>(
            "store", model(), *tavrolin::platform::current().recordStores,
            *tavrolin::platform::current().dispatch);
        StoreDescription description;
        description.url = tavrolin::foundation::URL::fileURLWithPath(path);
        container_->setPersistentStoreDescriptions({description});
        container_->loadPersistentStores([](const StoreDescription&, const auto& failure) {
            if (failure) fail(failure->description());
        });
    }

    void add() {
        payload_->cvnPayload->trid = identifiers_.next();
        // A context each, as in the library: background tasks get one of their own.
        const auto context = container_->newBackgroundContext();
        const auto record = CVNPushNotificationPersistenceService::addNotificationWithPayload(
            payload_, 2, 0, context);
        if (!record || record->objectID() == 0) fail("not added");
    }

private:
    std::unique_ptr<tavrolin::platform::PersistentContainer> container_;
    Identifiers identifiers_;
    Ref<CVNNotificationPayloadModel> payload_ = payload({});
};

class Bare {
public:
    Bare(const std::string& filled, const std::string& path) {
        std::filesystem::copy_file(filled, path);
        check(sqlite3_open_v2(path.c_str(), &database_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                              nullptr));
        check(sqlite3_exec(database_, "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr));
        begin_ = prepare("BEGIN IMMEDIATE");
        commit_ = prepare("COMMIT");
        find_ = prepare("SELECT _id FROM CorvalenPushNotificationEvent WHERE trid = ?");
        insert_ = prepare(
            "INSERT INTO CorvalenPushNotificationEvent (trid, source, campaignType, payload, time, "
            "alreadyDisplayedOnTray, isDismissed, isRead, scheduledDate, ttlDate, currentStatus, "
            "publishedDate, collapseKey, _version) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,1)");
    }

    void add() {
        values_[0] = identifiers_.next();
        const std::vector<Value>& values = values_;
        step(begin_, SQLITE_DONE);
        const auto id = values[0].string();
        check(sqlite3_bind_text(find_, 1, id.data(), static_cast<int>(id.size()), SQLITE_STATIC));
        step(find_, SQLITE_DONE);
        for (std::size_t i = 0; i < values.size(); ++i)
            bind(static_cast<int>(i) + 1, values[i]);
        step(insert_, SQLITE_DONE);
        step(commit_, SQLITE_DONE);
    }

private:
    void check(int result) {
        if (result != SQLITE_OK) fail(sqlite3_errmsg(database_));
    }
    sqlite3_stmt* prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        check(
            sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
        return statement;
    }
    void step(sqlite3_stmt* statement, int expected) {
        if (sqlite3_step(statement) != expected) fail(sqlite3_errmsg(database_));
        sqlite3_reset(statement);
    }
    void bind(int index, const Value& value) {
        switch (value.kind()) {
            case Value::Kind::string:
                check(sqlite3_bind_text(insert_, index, value.string().data(),
                                        static_cast<int>(value.length()), SQLITE_STATIC));
                break;
            case Value::Kind::data:
                check(sqlite3_bind_blob(insert_, index, value.bytes().data(),
                                        static_cast<int>(value.bytes().size()), SQLITE_STATIC));
                break;
            case Value::Kind::date:
                check(sqlite3_bind_double(insert_, index, value.date().secondsSince1970));
                break;
            case Value::Kind::boolean:
                check(sqlite3_bind_int(insert_, index, value.boolValue() ? 1 : 0));
                break;
            default:
                check(sqlite3_bind_null(insert_, index));
        }
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt *begin_ = nullptr, *commit_ = nullptr, *find_ = nullptr, *insert_ = nullptr;
    Identifiers identifiers_;
    std::vector<Value> values_ = row({});  // archived beforehand: only the store's add archives
};

struct Contenders {
    explicit Contenders(const std::string& folder)
        : few(filledFile(folder, kFew), folder + "/few.sqlite"),
          many(filledFile(folder, kMany), folder + "/many.sqlite"),
          bare(folder + "/filled-" + std::to_string(kMany) + ".sqlite", folder + "/bare.sqlite") {}
    Store few;
    Store many;
    Bare bare;
};

Contenders* contenders = nullptr;

template <class Operation>
double microsecondsOf(int count, const Operation& operation) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i)
        operation();
    const std::chrono::duration<double, std::micro> passed =
        std::chrono::steady_clock::now() - begin;
    return passed.count() / count;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// In turns, so that whatever else the machine does falls on all of them; a turn is as long as it
// takes to come to a checkpoint of the log, about.
void printRatios() {
    constexpr int kTurns = 15;
    constexpr int kAdds = 100;
    std::vector<double> toBare;
    std::vector<double> toFew;
    for (int turn = 0; turn < kTurns; ++turn) {
        const double bare = microsecondsOf(kAdds, [] { contenders->bare.add(); });
        const double many = microsecondsOf(kAdds, [] { contenders->many.add(); });
        const double few = microsecondsOf(kAdds, [] { contenders->few.add(); });
        toBare.push_back(many / bare);
        toFew.push_back(many / few);
    }
    std::printf("ratio store-add-to-bare %.2f (goal <= 1.30)\n", median(toBare));
    std::printf("ratio store-add-100000-to-1000 %.2f (goal <= 1.20)\n", median(toFew));
}

void addAtFew(benchmark::State& state) {
    for (auto _ : state)
        contenders->few.add();
}
void addAtMany(benchmark::State& state) {
    for (auto _ : state)
        contenders->many.add();
}
void addBare(benchmark::State& state) {
    for (auto _ : state)
        contenders->bare.add();
}

BENCHMARK(addAtFew)->Name("store add at 1,000 records")->Iterations(500)->UseRealTime();
BENCHMARK(addAtMany)->Name("store add at 100,000 records")->Iterations(500)->UseRealTime();
BENCHMARK(addBare)->Name("bare add at 100,000 records")->Iterations(500)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::string folder =
        (std::filesystem::temp_directory_path() / "store-benchmark-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) fail("no folder");

    auto& memory = *new tavrolin::adapters::memory::MemoryPlatform;
    memory.logSink.setEnabled(false);
    tavrolin::platform::Platform platform = memory.platform();
    platform.recordStores = new tavrolin::adapters::sqlite::SQLiteRecordStores;
    tavrolin::platform::install(platform);
    CVNNotificationPayloadModelValueTransformer::registerTransformer();
    {
        Contenders all(folder);
        contenders = &all;
        benchmark::RunSpecifiedBenchmarks();
        printRatios();
    }
    std::filesystem::remove_all(folder);
    return 0;
}
