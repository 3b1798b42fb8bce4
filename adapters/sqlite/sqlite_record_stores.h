#pragma once

#include "tavrolin/platform/record_store.h"

namespace tavrolin::adapters::sqlite {

/// Stores in SQLite files: a table an entity, with a write-ahead log that is synced at each commit.
///
/// A new file and its folders are for their owner only (0600, 0700). A file is taken as one of ours
/// by its application identifier; any other file is refused and stays as it is. Several processes
/// and threads may open one file, each with connections of its own; a writer waits for another one
/// for up to five seconds. Opened for reading only, nothing but SQLite's own coordination files
/// beside a store in use is ever made.
class SQLiteRecordStores : public platform::RecordStores {
public:
    foundation::Expected<std::unique_ptr<platform::RecordStore>> open(
        const platform::ManagedObjectModel& model,
        const platform::StoreDescription& description) override;
};

}  // namespace tavrolin::adapters::sqlite
