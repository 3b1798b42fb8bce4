// What the library does with many notifications at once: the duplicate pass over a full tray beside
// parsing the same payloads alone, and a silent fetch of 500 campaigns beside one of 50.

#include <cstdlib>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adapters/json/json_text.h"
#include "adapters/memory/memory_platform.h"
#include "adapters/sqlite/sqlite_record_stores.h"
#include "benchmarks/filled_store.h"
#include "benchmarks/ratios.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/notification_service_extension.h"
#include "tavrolin/store/core_data_controller.h"
#include "tests/support/counting_record_stores.h"

namespace {

using namespace tavrolin;
using namespace tavrolin::benchmarks;
using foundation::Value;

constexpr std::size_t kOnTray = 1'000;
constexpr int kFewCampaigns = 50;
constexpr int kManyCampaigns = 500;
constexpr platform::AuthorizationStatus kGranted = 2;

// A payload of the examples, with identifiers of its own.
Value push(std::uint64_t number) {
    static const Value example = [] {
        std::ifstream file(TAVROLIN_SOURCE_DIR "/examples/payloads/carousel-landscape.json");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        return *adapters::json::JSONText().parse(text);
    }();
    Value payload = example;
    Value section = payload["cvnPayload"];
    section.set("trid", trid(number));
    section.set("collapseKey", "key-" + trid(number));
    section.set("carousel", Value::array());  // nothing is to be downloaded
    payload.set("cvnPayload", std::move(section));
    return payload;
}

std::vector<Value> pushes(std::size_t count) {
    std::vector<Value> payloads;
    for (std::size_t i = 0; i < count; ++i)
        payloads.push_back(push(i));
    return payloads;
}

void compareDuplicatePass(adapters::memory::MemoryPlatform& memory) {
    const std::vector<Value> payloads = pushes(kOnTray);
    for (std::size_t i = 0; i < payloads.size(); ++i) {
        platform::NotificationContent content;
        content.userInfo = payloads[i];
        memory.notificationCenter.deliver({trid(i), content});
    }
    const auto arrived =
        CVNNotificationParser::parseNotificationPayloadDictionary(push(kOnTray + 1));
    CVNNotificationServiceExtension extension;
    const auto times =
        timesInTurns(TimeOf::processor, 61, 1,
                     {[&] {
                          for (const Value& payload : payloads)
                              CVNNotificationParser::parseNotificationPayloadDictionary(payload);
                      },
                      [&] {
                          extension.removeDuplicateNotificationFromTray(arrived);
                          memory.dispatch.runUntilIdle();
                      }});
    if (memory.notificationCenter.delivered().size() != kOnTray) fail("something was a duplicate");
    std::printf("duplicate pass over 1,000: %.2f ms (parsing alone %.2f ms)\n",
                median(times[1]) / 1e3, median(times[0]) / 1e3);
    printRatio("duplicate-pass-1000-to-parsing", medianRatio(times[1], times[0]), 1.3);
}

struct Fetch {
    int transactions = 0;
    double microseconds = 0;
};

// What has to be stored for a fetch of so many campaigns that nobody has seen yet.
Fetch fetch(adapters::memory::MemoryPlatform& memory, tests::CountingRecordStores& stores,
            int campaigns) {
    static std::uint64_t next = 1'000'000;
    Value normal = Value::array();
    for (int i = 0; i < campaigns; ++i) {
        Value payload = push(next++);
        Value section = payload["cvnPayload"];
        section.set("collapseKey", "");
        payload.set("cvnPayload", std::move(section));
        normal.append(std::move(payload));
    }
    stores.takeCommits();
    Fetch result;
    result.microseconds = timesInTurns(
        TimeOf::real, 1, 1, {[&] {
            CVNPushCorvalenHandler::sharedInstance().setPushVexAndScheduleNotifications(
                normal, Value::array());
            memory.dispatch.runUntilIdle();
        }})[0][0];
    result.transactions = stores.takeCommits();
    return result;
}

void compareFetches(adapters::memory::MemoryPlatform& memory, tests::CountingRecordStores& stores) {
    memory.notificationCenter.setAuthorizationStatus(kGranted);
    std::vector<double> few;
    std::vector<double> many;
    double transactions = 0;
    for (int turn = 0; turn < 9; ++turn) {
        const Fetch ofFew = fetch(memory, stores, kFewCampaigns);
        const Fetch ofMany = fetch(memory, stores, kManyCampaigns);
        if (ofFew.transactions == 0) fail("the fetch stored nothing");
        few.push_back(ofFew.microseconds / kFewCampaigns);
        many.push_back(ofMany.microseconds / kManyCampaigns);
        transactions = static_cast<double>(ofMany.transactions) / ofFew.transactions;
    }
    std::printf("silent fetch: %.1f us a campaign of 500 (of 50: %.1f us)\n", median(many),
                median(few));
    printRatio("silent-fetch-500-transactions-to-50", transactions, 1.0);
    printRatio("silent-fetch-time-per-campaign-500-to-50", medianRatio(many, few), 1.0);
}

}  // namespace

int main() {
    std::string folder =
        (std::filesystem::temp_directory_path() / "notifications-benchmark-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) fail("no folder");

    auto& memory = *new adapters::memory::MemoryPlatform;
    memory.logSink.setEnabled(false);
    auto& sqlite = *new adapters::sqlite::SQLiteRecordStores;
    auto& stores = *new tests::CountingRecordStores(sqlite);
    platform::Platform platform = memory.platform();
    platform.recordStores = &stores;
    platform::install(platform);
    CVNPushCoreDataController& store = CVNPushCoreDataController::sharedInstance();
    store.loadStoreAtPath(foundation::URL::fileURLWithPath(folder), nullptr);
    memory.dispatch.runUntilIdle();
    if (!store.storeLoaded()) fail("the store can't be loaded");

    compareDuplicatePass(memory);
    compareFetches(memory, stores);
    std::filesystem::remove_all(folder);
    return 0;
}
