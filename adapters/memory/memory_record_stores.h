#pragma once

#include <memory>

#include "tavrolin/platform/record_store.h"

namespace tavrolin::adapters::memory {

/// Stores that live as long as this object, found by their URL. Behaves as a store on disk does:
/// readers see what was committed, one writer at a time, read-only stores must be there already.
/// Threads: any.
class MemoryRecordStores : public platform::RecordStores {
public:
    MemoryRecordStores();
    ~MemoryRecordStores() override;

    foundation::Expected<std::unique_ptr<platform::RecordStore>> open(
        const platform::ManagedObjectModel& model,
        const platform::StoreDescription& description) override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tavrolin::adapters::memory
