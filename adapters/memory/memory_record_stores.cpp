#include "adapters/memory/memory_record_stores.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/predicate.h"

namespace tavrolin::adapters::memory {

using foundation::Expected;
using foundation::Failure;
using foundation::Value;
using platform::EntityDescription;
using platform::FetchRequest;
using platform::ManagedObjectModel;
using platform::Record;
using platform::RecordID;
using platform::storeError;
using platform::StoreErrorCode;

namespace {

constexpr std::chrono::seconds kBusyTimeout{5};

struct Table {
    std::map<RecordID, std::shared_ptr<const Record>> records;
    RecordID lastID = 0;
};
using Tables = std::map<std::string, Table, std::less<>>;

// What stands for the file: the committed tables, replaced as a whole, and who may write.
struct File {
    std::mutex mutex;
    std::condition_variable writerLeft;
    bool hasWriter = false;
    std::shared_ptr<const Tables> committed = std::make_shared<Tables>();
};

// Absent values come first.
int order(const Value& a, const Value& b) {
    if (a.isNil() || b.isNil()) return static_cast<int>(!a.isNil()) - static_cast<int>(!b.isNil());
    return foundation::compare(a, b);
}

using Row = std::shared_ptr<const Record>;

// A record that was written before the model gained an attribute lacks it.
Value valueAt(const Record& record, std::size_t index) {
    return index < record.values.size() ? record.values[index] : Value();
}

class MemoryRecordStore : public platform::RecordStore {
public:
    MemoryRecordStore(const ManagedObjectModel& model, std::shared_ptr<File> file, bool isReadOnly)
        : model_(model), file_(std::move(file)), isReadOnly_(isReadOnly) {}
    ~MemoryRecordStore() override {
        if (isOpen_) endTransaction();
    }

    Failure begin() override;
    Failure commit() override;
    void rollback() override { endTransaction(); }

    Expected<std::vector<Record>> fetch(const FetchRequest& request) override;
    Expected<std::vector<Value>> fetchDictionaries(const FetchRequest& request) override;
    Expected<std::int64_t> count(const FetchRequest& request) override {
        return static_cast<std::int64_t>(matching(request).size());
    }
    Expected<std::optional<Record>> record(const EntityDescription& entity, RecordID id) override;

    Expected<RecordID> insert(const EntityDescription& entity,
                              const std::vector<Value>& values) override;
    Expected<std::int64_t> update(const EntityDescription& entity, const Record& record,
                                  std::optional<std::int64_t> expectedVersion) override;
    Failure remove(const EntityDescription& entity, RecordID id) override;
    Expected<std::int64_t> removeMatching(const FetchRequest& request) override;
    Expected<std::int64_t> updateMatching(const FetchRequest& request,
                                          const Value& properties) override;

private:
    std::vector<Row> matching(const FetchRequest& request) const;
    std::shared_ptr<const Tables> snapshot() const;
    Table& writable(const EntityDescription& entity);
    Failure refusal() const;
    void endTransaction();

    const ManagedObjectModel& model_;
    const std::shared_ptr<File> file_;
    const bool isReadOnly_;
    bool isOpen_ = false;
    std::shared_ptr<Tables> changed_;  // the transaction's own tables, once it has written
};

Failure MemoryRecordStore::begin() {
    if (isReadOnly_) return storeError(StoreErrorCode::readOnly, "the store is read-only");
    std::unique_lock lock(file_->mutex);
    if (!file_->writerLeft.wait_for(lock, kBusyTimeout, [this] { return !file_->hasWriter; })) {
        return storeError(StoreErrorCode::busy, "another writer did not end in time");
    }
    file_->hasWriter = true;
    isOpen_ = true;
    return std::nullopt;
}

Failure MemoryRecordStore::commit() {
    if (changed_) {
        const std::lock_guard lock(file_->mutex);
        file_->committed = std::move(changed_);
    }
    endTransaction();
    return std::nullopt;
}

void MemoryRecordStore::endTransaction() {
    changed_.reset();
    const std::lock_guard lock(file_->mutex);
    if (isOpen_) file_->hasWriter = false;
    isOpen_ = false;
    file_->writerLeft.notify_one();
}

std::shared_ptr<const Tables> MemoryRecordStore::snapshot() const {
    if (changed_) return changed_;
    const std::lock_guard lock(file_->mutex);
    return file_->committed;
}

std::vector<Row> MemoryRecordStore::matching(const FetchRequest& request) const {
    const EntityDescription& entity = platform::checkedEntity(model_, request);
    std::vector<Row> rows;
    const auto tables = snapshot();
    const auto table = tables->find(entity.name);
    if (table == tables->end()) return rows;
    for (const auto& [id, row] : table->second.records) {
        const auto valueOf = [&, &record = *row](std::string_view key) {
            return key.empty() ? Value(record.id) : valueAt(record, *entity.indexOf(key));
        };
        if (!request.predicate || request.predicate->evaluate(valueOf)) rows.push_back(row);
    }
    if (request.sortDescriptor) {
        const std::size_t key = *entity.indexOf(request.sortDescriptor->key);
        const bool ascending = request.sortDescriptor->ascending;
        std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) {
            const int result = order(valueAt(*a, key), valueAt(*b, key));
            return ascending ? result < 0 : result > 0;
        });
    }
    return rows;
}

Expected<std::vector<Record>> MemoryRecordStore::fetch(const FetchRequest& request) {
    std::vector<Record> records;
    for (const Row& row : matching(request)) {
        records.push_back(*row);
    }
    return records;
}

Expected<std::vector<Value>> MemoryRecordStore::fetchDictionaries(const FetchRequest& request) {
    const EntityDescription& entity = platform::checkedEntity(model_, request);
    const auto& expressions = request.expressionsToFetch;
    const auto aggregate = std::find_if(expressions.begin(), expressions.end(),
                                        [](const auto& item) { return !item.function.empty(); });
    const bool isAggregate = aggregate != expressions.end();
    const bool isGrouped = isAggregate || !request.propertiesToGroupBy.empty();

    // The rows, or of each group the one that stands for it: the one with the greatest value of the
    // aggregate, else the latest.
    FetchRequest inOrder = request;
    if (isGrouped) inOrder.sortDescriptor.reset();
    std::vector<Row> rows = matching(inOrder);
    if (isGrouped) {
        std::map<std::vector<Value>, Row,
                 bool (*)(const std::vector<Value>&, const std::vector<Value>&)>
            groups([](const std::vector<Value>& a, const std::vector<Value>& b) {
                for (std::size_t i = 0; i < a.size(); ++i) {
                    if (const int result = order(a[i], b[i])) return result < 0;
                }
                return false;
            });
        for (const Row& row : rows) {
            std::vector<Value> key;
            key.reserve(request.propertiesToGroupBy.size());
            for (const std::string& property : request.propertiesToGroupBy) {
                key.push_back(valueAt(*row, *entity.indexOf(property)));
            }
            Row& standing = groups[key];
            const std::size_t by = isAggregate ? *entity.indexOf(aggregate->keyPath) : 0;
            if (!standing || !isAggregate || order(valueAt(*row, by), valueAt(*standing, by)) > 0) {
                standing = row;
            }
        }
        rows.clear();
        for (auto& [key, row] : groups)
            rows.push_back(row);
        if (request.sortDescriptor) {
            const std::size_t by = *entity.indexOf(request.sortDescriptor->key);
            std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) {
                const int result = order(valueAt(*a, by), valueAt(*b, by));
                return request.sortDescriptor->ascending ? result < 0 : result > 0;
            });
        }
    }

    std::vector<Value> dictionaries;
    for (const Row& row : rows) {
        Value dictionary = Value::dictionary();
        for (const std::string& property : request.propertiesToFetch) {
            dictionary.setIfPresent(property, valueAt(*row, *entity.indexOf(property)));
        }
        for (const auto& expression : expressions) {
            dictionary.setIfPresent(expression.name,
                                    expression.function.empty()
                                        ? Value(row->id)
                                        : valueAt(*row, *entity.indexOf(expression.keyPath)));
        }
        dictionaries.push_back(std::move(dictionary));
    }
    return dictionaries;
}

Expected<std::optional<Record>> MemoryRecordStore::record(const EntityDescription& entity,
                                                          RecordID id) {
    const auto tables = snapshot();
    const auto table = tables->find(entity.name);
    if (table == tables->end()) return std::optional<Record>();
    const auto found = table->second.records.find(id);
    if (found == table->second.records.end()) return std::optional<Record>();
    return std::optional<Record>(*found->second);
}

Failure MemoryRecordStore::refusal() const {
    if (isReadOnly_) return storeError(StoreErrorCode::readOnly, "the store is read-only");
    if (!isOpen_) return storeError(StoreErrorCode::other, "no transaction is open");
    return std::nullopt;
}

Table& MemoryRecordStore::writable(const EntityDescription& entity) {
    if (!changed_) changed_ = std::make_shared<Tables>(*snapshot());
    return (*changed_)[entity.name];
}

std::vector<Value> checkedValues(const EntityDescription& entity,
                                 const std::vector<Value>& values) {
    std::vector<Value> checked(entity.attributes.size());
    for (std::size_t i = 0; i < checked.size() && i < values.size(); ++i) {
        checked[i] = platform::checkedValue(entity, entity.attributes[i], values[i]);
    }
    return checked;
}

Expected<RecordID> MemoryRecordStore::insert(const EntityDescription& entity,
                                             const std::vector<Value>& values) {
    if (Failure failure = refusal()) return *failure;
    std::vector<Value> checked = checkedValues(entity, values);
    Table& table = writable(entity);
    const RecordID id = ++table.lastID;
    table.records[id] = std::make_shared<Record>(Record{id, 1, std::move(checked)});
    return id;
}

Expected<std::int64_t> MemoryRecordStore::update(const EntityDescription& entity,
                                                 const Record& record,
                                                 std::optional<std::int64_t> expectedVersion) {
    if (Failure failure = refusal()) return *failure;
    std::vector<Value> checked = checkedValues(entity, record.values);
    Table& table = writable(entity);
    const auto found = table.records.find(record.id);
    const bool exists = found != table.records.end();
    if (expectedVersion && (!exists || found->second->version != *expectedVersion)) {
        return storeError(StoreErrorCode::mergeConflict, "the record was changed by somebody else");
    }
    const std::int64_t version = exists ? found->second->version + 1 : 1;
    table.records[record.id] =
        std::make_shared<Record>(Record{record.id, version, std::move(checked)});
    return version;
}

Failure MemoryRecordStore::remove(const EntityDescription& entity, RecordID id) {
    if (Failure failure = refusal()) return failure;
    writable(entity).records.erase(id);
    return std::nullopt;
}

Expected<std::int64_t> MemoryRecordStore::removeMatching(const FetchRequest& request) {
    const std::vector<Row> rows = matching(request);
    if (Failure failure = refusal()) return *failure;
    Table& table = writable(*model_.entityNamed(request.entityName));
    for (const Row& row : rows) {
        table.records.erase(row->id);
    }
    return static_cast<std::int64_t>(rows.size());
}

Expected<std::int64_t> MemoryRecordStore::updateMatching(const FetchRequest& request,
                                                         const Value& properties) {
    const std::vector<Row> rows = matching(request);
    const EntityDescription& entity = *model_.entityNamed(request.entityName);
    const auto changes = platform::checkedChanges(entity, properties);
    if (Failure failure = refusal()) return *failure;
    Table& table = writable(entity);
    for (const Row& row : rows) {
        Record changed = *row;
        ++changed.version;
        changed.values.resize(entity.attributes.size());
        for (const auto& [index, value] : changes)
            changed.values[index] = value;
        table.records[row->id] = std::make_shared<Record>(std::move(changed));
    }
    return static_cast<std::int64_t>(rows.size());
}

}  // namespace

struct MemoryRecordStores::State {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<File>, std::less<>> files;
};

MemoryRecordStores::MemoryRecordStores() : state_(std::make_unique<State>()) {}
MemoryRecordStores::~MemoryRecordStores() = default;

Expected<std::unique_ptr<platform::RecordStore>> MemoryRecordStores::open(
    const ManagedObjectModel& model, const platform::StoreDescription& description) {
    const std::string& url = description.url.absoluteString();
    const std::lock_guard lock(state_->mutex);
    auto found = state_->files.find(url);
    if (found == state_->files.end()) {
        if (description.isReadOnly) {
            return storeError(StoreErrorCode::missing, "there is no store at " + url);
        }
        found = state_->files.emplace(url, std::make_shared<File>()).first;
    }
    return std::unique_ptr<platform::RecordStore>(
        std::make_unique<MemoryRecordStore>(model, found->second, description.isReadOnly));
}

}  // namespace tavrolin::adapters::memory
