#include "tests/support/record_stores.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <utility>

#include "adapters/memory/memory_record_stores.h"
#include "adapters/sqlite/sqlite_record_stores.h"

namespace tavrolin::tests {

using foundation::Value;
using platform::AttributeType;

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "tavrolin-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::unique_ptr<platform::RecordStores> makeRecordStores(StoreKind kind) {
    if (kind == StoreKind::memory) return std::make_unique<adapters::memory::MemoryRecordStores>();
    return std::make_unique<adapters::sqlite::SQLiteRecordStores>();
}

platform::StoreDescription storeAt(const std::string& path) {
    platform::StoreDescription description;
    description.url = foundation::URL::fileURLWithPath(path);
    return description;
}

const platform::ManagedObjectModel& noteModel() {
    static const platform::ManagedObjectModel model{
        {{"Note",
          {{"title", AttributeType::string, true, {}},
           {"text", AttributeType::string, false, {}},
           {"pages", AttributeType::integer, false, {}},
           {"weight", AttributeType::real, false, {}},
           {"isRead", AttributeType::boolean, false, {}},
           {"at", AttributeType::date, true, {}},
           {"bytes", AttributeType::data, false, {}}}}}};
    return model;
}

std::vector<Value> note(Value title, Value pages, Value isRead, Value at) {
    return {std::move(title), {}, std::move(pages), {}, std::move(isRead), std::move(at), {}};
}

platform::FetchRequest notes(std::string_view format, std::vector<Value> arguments) {
    platform::FetchRequest request;
    request.entityName = "Note";
    if (!format.empty()) {
        request.predicate = foundation::Predicate::withFormat(format, std::move(arguments));
    }
    return request;
}

}  // namespace tavrolin::tests
