#pragma once

#include <memory>

#include "tavrolin/platform/lazy_record_store.h"

namespace tavrolin::tests {

/// Another port's stores, and how many transactions were committed in them.
class CountingRecordStores : public platform::RecordStores {
public:
    explicit CountingRecordStores(platform::RecordStores& target) : target_(target) {}

    int takeCommits() { return std::exchange(commits_, 0); }

    foundation::Expected<std::unique_ptr<platform::RecordStore>> open(
        const platform::ManagedObjectModel& model,
        const platform::StoreDescription& description) override {
        return std::unique_ptr<platform::RecordStore>(
            std::make_unique<Store>(model, target_, description, commits_));
    }

private:
    class Store : public platform::LazyRecordStore {
    public:
        Store(const platform::ManagedObjectModel& model, platform::RecordStores& stores,
              platform::StoreDescription description, int& commits)
            : LazyRecordStore(model, stores, std::move(description)), commits_(commits) {}
        foundation::Failure commit() override {
            ++commits_;
            return LazyRecordStore::commit();
        }

    private:
        int& commits_;
    };

    platform::RecordStores& target_;
    int commits_ = 0;
};

}  // namespace tavrolin::tests
