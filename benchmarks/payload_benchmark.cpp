// What a payload costs on its way from text to the store, beside another JSON reader's time for the
// text alone.

#include <nlohmann/json.hpp>

#include <fstream>
#include <string>

#include "adapters/json/json_text.h"
#include "adapters/memory/memory_platform.h"
#include "benchmarks/ratios.h"
#include "tavrolin/foundation/keyed_archive.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {
namespace {

using foundation::KeyedArchiver;
using foundation::KeyedUnarchiver;

const adapters::json::JSONText reader;

const std::string& text() {
    static const std::string compact = [] {
        std::ifstream file(TAVROLIN_SOURCE_DIR "/examples/payloads/carousel-landscape.json");
        return nlohmann::ordered_json::parse(file).dump();
    }();
    return compact;
}

foundation::Ref<CVNNotificationPayloadModel> model() {
    return CVNNotificationParser::parseNotificationPayloadDictionary(*reader.parse(text()));
}

void otherReader(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::parse(text()));
}
BENCHMARK(otherReader);

void textToValue(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.parse(text()));
}
BENCHMARK(textToValue);

void textToModel(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(model());
}
BENCHMARK(textToModel);

void modelToDictionary(benchmark::State& state) {
    const auto record = model();
    for (auto _ : state)
        benchmark::DoNotOptimize(record->toNSDictionary());
}
BENCHMARK(modelToDictionary);

void modelToArchive(benchmark::State& state) {
    const auto record = model();
    for (auto _ : state)
        benchmark::DoNotOptimize(KeyedArchiver::archivedData(*record, true));
}
BENCHMARK(modelToArchive);

void archiveToModel(benchmark::State& state) {
    const auto bytes = KeyedArchiver::archivedData(*model(), true);
    for (auto _ : state)
        benchmark::DoNotOptimize(KeyedUnarchiver::unarchive<CVNNotificationPayloadModel>(bytes));
}
BENCHMARK(archiveToModel);

}  // namespace
}  // namespace tavrolin

int main(int argc, char** argv) {
    using namespace tavrolin;
    adapters::memory::MemoryPlatform memory;
    platform::install(memory.platform());
    const int status = benchmarks::runWithRatios(argc, argv,
                                                 {{"textToModel", "otherReader", 0.2},
                                                  {"modelToDictionary", "otherReader", 0.05},
                                                  {"modelToArchive", "otherReader", 0.1},
                                                  {"archiveToModel", "otherReader", 0.2}});
    const double bytes =
        static_cast<double>(foundation::KeyedArchiver::archivedData(*model(), true).size());
    std::printf("ratio archivedBytes %.3f (goal <= 1.00)\n",
                bytes / static_cast<double>(text().size()));
    return status;
}
