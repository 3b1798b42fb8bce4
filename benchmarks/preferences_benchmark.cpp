// What a preference costs through CVNPushPreferences, beside LMDB's bare operations on a file of
// the same content. A bare read renews and resets its transaction, as every read must that is to
// see what other processes wrote.

#include <benchmark/benchmark.h>
#include <lmdb.h>
#include <cstdlib>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "adapters/lmdb/lmdb_preferences.h"
#include "adapters/memory/memory_platform.h"
#include "tavrolin/core/preference_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/platform/platform.h"

namespace {

using tavrolin::CVNPushPreferences;

constexpr std::string_view kToken =
    "0a1b2c3d4e5f60718293a4b5c6d7e8f90a1b2c3d4e5f60718293a4b5c6d7e8f9";

void require(int code) {
    if (code == 0) return;
    std::fprintf(stderr, "LMDB: %s\n", mdb_strerror(code));
    std::exit(1);
}

// LMDB with nothing around it, opened as the adapter opens it.
class Bare {
public:
    explicit Bare(const std::string& path) {
        require(mdb_env_create(&environment_));
        require(mdb_env_set_mapsize(environment_, std::size_t{1} << 30U));
        require(mdb_env_open(environment_, path.c_str(), MDB_NOSUBDIR | MDB_NOTLS, 0600));
        require(mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &reading_));
        require(mdb_dbi_open(reading_, nullptr, 0, &database_));
        mdb_txn_reset(reading_);
    }

    std::size_t get(std::string_view key) {
        MDB_val name = valueOf(key);
        MDB_val data{};
        require(mdb_txn_renew(reading_));
        require(mdb_get(reading_, database_, &name, &data));
        const std::size_t size = data.mv_size;
        mdb_txn_reset(reading_);
        return size;
    }

    void put(std::string_view key, std::string_view value) {
        MDB_txn* transaction = nullptr;
        MDB_val name = valueOf(key);
        MDB_val data = valueOf(value);
        require(mdb_txn_begin(environment_, nullptr, 0, &transaction));
        require(mdb_put(transaction, database_, &name, &data, 0));
        require(mdb_txn_commit(transaction));
    }

private:
    static MDB_val valueOf(std::string_view text) {
        return {text.size(), const_cast<char*>(text.data())};
    }

    MDB_env* environment_ = nullptr;
    MDB_txn* reading_ = nullptr;
    MDB_dbi database_ = 0;
};

struct Fixture {
    std::string folder;
    tavrolin::adapters::memory::MemoryPlatform memory;
    tavrolin::adapters::lmdb::LMDBPreferences suites;
    Bare bare;

    explicit Fixture(const std::string& at)
        : folder(at), suites([at](std::string_view) { return at; }, at), bare(at + "/bare.lmdb") {
        tavrolin::platform::Platform platform = memory.platform();
        platform.preferences = &suites;
        tavrolin::platform::install(platform);
        CVNPushPreferences::sharedInstance().setSuitName("group.corvalen.sample");
        for (int i = 0; i < 30; ++i) {
            const std::string key = "Preference" + std::to_string(i);
            CVNPushPreferences::sharedInstance().putString(kToken, key);
            bare.put("CVN" + key, kToken);
        }
        CVNPushPreferences::sharedInstance().putString(kToken, tavrolin::kPrefPushToken);
        bare.put("CVNPushToken", kToken);
    }
};

Fixture* fixture = nullptr;

void readPreference() {
    auto value = CVNPushPreferences::sharedInstance().getStringForKey(tavrolin::kPrefPushToken);
    benchmark::DoNotOptimize(value);
}

void readBare() {
    auto size = fixture->bare.get("CVNPushToken");
    benchmark::DoNotOptimize(size);
}

void writePreference() {
    CVNPushPreferences::sharedInstance().putString(kToken, tavrolin::kPrefPushToken);
}

void writeBare() {
    fixture->bare.put("CVNPushToken", kToken);
}

template <class Operation>
double microsecondsOf(int count, const Operation& operation) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i)
        operation();
    const std::chrono::duration<double, std::micro> passed =
        std::chrono::steady_clock::now() - begin;
    return passed.count() / count;
}

// The two are measured in turns, so that whatever else the machine does falls on both, and the
// median of the turns' ratios counts.
template <class Operation, class Baseline>
void printRatio(const char* name, double goal, int count, const Operation& operation,
                const Baseline& baseline) {
    std::vector<double> ratios;
    for (int turn = 0; turn < 25; ++turn) {
        const double other = microsecondsOf(count, baseline);
        ratios.push_back(microsecondsOf(count, operation) / other);
    }
    std::nth_element(ratios.begin(), ratios.begin() + 12, ratios.end());
    std::printf("ratio %s %.2f (goal <= %.2f)\n", name, ratios[12], goal);
}

template <void (*Operation)()>
void run(benchmark::State& state) {
    for (auto _ : state)
        Operation();
}

BENCHMARK(run<readPreference>)->Name("preference read");
BENCHMARK(run<readBare>)->Name("LMDB get");
BENCHMARK(run<writePreference>)->Name("preference write")->UseRealTime();
BENCHMARK(run<writeBare>)->Name("LMDB synced put")->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    std::string pattern = (std::filesystem::temp_directory_path() / "preferences-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) return 1;
    fixture = new Fixture(pattern);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    printRatio("preference-read", 3.0, 20'000, readPreference, readBare);
    printRatio("preference-write", 1.2, 40, writePreference, writeBare);
    std::filesystem::remove_all(pattern);
    return 0;
}
