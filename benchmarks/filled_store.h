#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "adapters/sqlite/sqlite_record_stores.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/payload/value_transformer.h"
#include "tavrolin/store/push_notification_event.h"

namespace tavrolin::benchmarks {

[[noreturn]] inline void fail(const std::string& what) {
    std::fprintf(stderr, "benchmark: %s\n", what.c_str());
    std::exit(1);
}

/// As random as the identifiers of real campaigns, and the same in each run.
inline std::string trid(std::uint64_t number) {
    std::uint64_t x = (number + 1) * 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30U)) * 0xbf58476d1ce4e5b9ULL;
    x ^= x >> 27U;
    char text[48];
    std::snprintf(text, sizeof text, "%016llx-%08llu-campaign", static_cast<unsigned long long>(x),
                  static_cast<unsigned long long>(number));
    return text;
}

inline foundation::Ref<CVNNotificationPayloadModel> payload(const std::string& id) {
    auto model = std::make_shared<CVNNotificationPayloadModel>();
    model->source = "Corvalen";
    model->cvnPayload = std::make_shared<CVNPayload>();
    model->cvnPayload->trid = id;
    model->cvnPayload->collapseKey = "offers";
    model->cvnPayload->publishedDate = "2024-01-01T00:00:00";
    model->cvnPayload->body = std::string(2'500, 'b');  // an archive of some 2.7 KB
    return model;
}

inline platform::ManagedObjectModel& storeModel() {
    static platform::ManagedObjectModel instance{
        {CorvalenPushNotificationEvent::entityDescription()}};
    return instance;
}

/// A record's values: delivered, neither read nor dismissed nor scheduled.
inline std::vector<foundation::Value> row(const std::string& id) {
    const foundation::Value archive =
        CVNNotificationPayloadModelValueTransformer::transformedValue(*payload(id));
    const foundation::Date now{1'704'067'200};
    return {id,    "APNS", "normal", archive,     now, false,   false,
            false, {},     {},       "delivered", now, "offers"};
}

/// Makes a store's file and puts the records in it, of which `rowOf` gives the values.
template <class RowOf>
void fillStore(const std::string& path, int records, const RowOf& rowOf) {
    platform::StoreDescription description;
    description.url = foundation::URL::fileURLWithPath(path);
    auto store = adapters::sqlite::SQLiteRecordStores().open(storeModel(), description);
    if (!store) fail(store.error().description());
    if ((*store)->begin()) fail("begin");
    for (int i = 0; i < records; ++i) {
        const auto number = static_cast<std::uint64_t>(i);
        if (!(*store)->insert(storeModel().entities.front(), rowOf(number))) fail("insert");
    }
    if ((*store)->commit()) fail("commit");
}

}  // namespace tavrolin::benchmarks
