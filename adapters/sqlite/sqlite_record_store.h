#pragma once

#include <memory>

#include "adapters/sqlite/connection.h"
#include "tavrolin/platform/record_store.h"

namespace tavrolin::adapters::sqlite {

/// The store over a connection whose file has what the model has. The model must outlive it.
std::unique_ptr<platform::RecordStore> makeRecordStore(std::unique_ptr<Connection> connection,
                                                       const platform::ManagedObjectModel& model);

}  // namespace tavrolin::adapters::sqlite
