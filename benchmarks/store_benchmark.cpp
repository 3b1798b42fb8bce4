// What adding a notification to the store costs, at 1,000 and at 100,000 records, beside a bare
// prepared look-up and INSERT of the same row in one SQLite transaction, on a file with the same
// schema, indices and settings.

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <cstdlib>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "adapters/sqlite/sqlite_record_stores.h"
#include "benchmarks/filled_store.h"
#include "benchmarks/ratios.h"
#include "tavrolin/payload/value_transformer.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace {

using namespace tavrolin::benchmarks;
using tavrolin::CVNNotificationPayloadModel;
using tavrolin::CVNNotificationPayloadModelValueTransformer;
using tavrolin::CVNPushNotificationPersistenceService;
using tavrolin::foundation::Ref;
using tavrolin::foundation::Value;
using tavrolin::platform::StoreDescription;

constexpr int kFew = 1'000;
constexpr int kMany = 100'000;

// Identifiers beyond those that the files were filled with.
class Identifiers {
public:
    std::string next() { return trid(1'000'000 + count_++); }

private:
    std::uint64_t count_ = 0;
};

// A file that was filled and never added to: each contender gets a copy.
std::string filledFile(const std::string& folder, int records) {
    const std::string path = folder + "/filled-" + std::to_string(records) + ".sqlite";
    fillStore(path, records, [](std::uint64_t i) { return row(trid(i)); });
    return path;
}

class Store {
public:
    Store(const std::string& filled, const std::string& path) {
        std::filesystem::copy_file(filled, path);
        container_ = std::make_unique<tavrolin::platform::PersistentContainer>(
            "store", storeModel(), *tavrolin::platform::current().recordStores,
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

void printRatios() {
    constexpr int kTurns = 15;
    constexpr int kAdds = 100;  // about as many as it takes to come to a checkpoint of the log
    const auto times = timesInTurns(TimeOf::real, kTurns, kAdds,
                                    {[] { contenders->bare.add(); }, [] { contenders->many.add(); },
                                     [] { contenders->few.add(); }});
    printRatio("store-add-to-bare", medianRatio(times[1], times[0]), 1.3);
    printRatio("store-add-100000-to-1000", medianRatio(times[1], times[2]), 1.2);
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
