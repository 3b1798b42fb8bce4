#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "tavrolin/platform/record_store.h"

namespace tavrolin::platform {

/// A connection that is opened when it is first used; every operation gives the error when it can't
/// be. An extension never uses its main thread's context, and opening a connection costs a good
/// part of the time in which content could be handed back. The model must outlive it. Threads: as
/// `RecordStore`.
class LazyRecordStore : public RecordStore {
public:
    LazyRecordStore(const ManagedObjectModel& model, RecordStores& stores,
                    StoreDescription description)
        : model_(model), stores_(stores), description_(std::move(description)) {}

    foundation::Failure begin() override {
        return use<foundation::Failure>([](RecordStore& store) { return store.begin(); });
    }
    foundation::Failure commit() override {
        return use<foundation::Failure>([](RecordStore& store) { return store.commit(); });
    }
    void rollback() override {
        if (store_) store_->rollback();
    }
    foundation::Expected<std::vector<Record>> fetch(const FetchRequest& request) override {
        return use<foundation::Expected<std::vector<Record>>>(
            [&](RecordStore& store) { return store.fetch(request); });
    }
    foundation::Expected<std::vector<foundation::Value>> fetchDictionaries(
        const FetchRequest& request) override {
        return use<foundation::Expected<std::vector<foundation::Value>>>(
            [&](RecordStore& store) { return store.fetchDictionaries(request); });
    }
    foundation::Expected<std::int64_t> count(const FetchRequest& request) override {
        return use<foundation::Expected<std::int64_t>>(
            [&](RecordStore& store) { return store.count(request); });
    }
    foundation::Expected<std::optional<Record>> record(const EntityDescription& entity,
                                                       RecordID id) override {
        return use<foundation::Expected<std::optional<Record>>>(
            [&](RecordStore& store) { return store.record(entity, id); });
    }
    foundation::Expected<RecordID> insert(const EntityDescription& entity,
                                          const std::vector<foundation::Value>& values) override {
        return use<foundation::Expected<RecordID>>(
            [&](RecordStore& store) { return store.insert(entity, values); });
    }
    foundation::Expected<std::int64_t> update(
        const EntityDescription& entity, const Record& record,
        std::optional<std::int64_t> expectedVersion) override {
        return use<foundation::Expected<std::int64_t>>(
            [&](RecordStore& store) { return store.update(entity, record, expectedVersion); });
    }
    foundation::Failure remove(const EntityDescription& entity, RecordID id) override {
        return use<foundation::Failure>(
            [&](RecordStore& store) { return store.remove(entity, id); });
    }
    foundation::Expected<std::int64_t> removeMatching(const FetchRequest& request) override {
        return use<foundation::Expected<std::int64_t>>(
            [&](RecordStore& store) { return store.removeMatching(request); });
    }
    foundation::Expected<std::int64_t> updateMatching(
        const FetchRequest& request, const foundation::Value& properties) override {
        return use<foundation::Expected<std::int64_t>>(
            [&](RecordStore& store) { return store.updateMatching(request, properties); });
    }

private:
    template <class Result, class Work>
    Result use(Work work) {
        if (!store_) {
            auto opened = stores_.open(model_, description_);
            if (!opened) return opened.error();
            store_ = std::move(*opened);
        }
        return work(*store_);
    }

    const ManagedObjectModel& model_;
    RecordStores& stores_;
    const StoreDescription description_;
    std::unique_ptr<RecordStore> store_;
};

}  // namespace tavrolin::platform
