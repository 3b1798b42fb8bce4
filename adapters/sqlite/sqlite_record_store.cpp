#include "adapters/sqlite/sqlite_record_store.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "adapters/sqlite/predicate_sql.h"

namespace tavrolin::adapters::sqlite {

using foundation::Expected;
using foundation::Failure;
using foundation::Value;
using platform::AttributeType;
using platform::EntityDescription;
using platform::ExpressionDescription;
using platform::FetchRequest;
using platform::ManagedObjectModel;
using platform::Record;
using platform::RecordID;
using platform::storeError;
using platform::StoreErrorCode;

namespace {

template <class Items, class Text>
std::string joined(const Items& items, Text text) {
    std::string result;
    for (const auto& item : items) {
        if (!result.empty()) result += ", ";
        result += text(item);
    }
    return result;
}

// The texts that don't depend on the request.
struct EntitySQL {
    explicit EntitySQL(const EntityDescription& entity) {
        const std::string table = quoted(entity.name);
        const std::string id(kIDColumn);
        const std::string version(kVersionColumn);
        const auto& attributes = entity.attributes;
        const std::string columns =
            joined(attributes, [](const auto& a) { return quoted(a.name); });
        const std::string places = joined(attributes, [](const auto&) { return "?"; });
        const std::string settings =
            joined(attributes, [](const auto& a) { return quoted(a.name) + " = ?"; });
        select = "SELECT " + id + ", " + version + ", " + columns + " FROM " + table;
        selectOne = select + " WHERE " + id + " = ?";
        insert = "INSERT INTO " + table + " (" + columns + ", " + version + ") VALUES (" + places +
                 ", 1)";
        restore = "INSERT INTO " + table + " (" + columns + ", " + version + ", " + id +
                  ") VALUES (" + places + ", 1, ?)";
        update = "UPDATE " + table + " SET " + settings + ", " + version + " = " + version +
                 " + 1 WHERE " + id + " = ?";
        updateExpected = update + " AND " + version + " = ?";
        update += " RETURNING " + version;
        updateExpected += " RETURNING " + version;
        remove = "DELETE FROM " + table + " WHERE " + id + " = ?";
    }

    std::string select, selectOne, insert, restore, update, updateExpected, remove;
};

class SQLiteRecordStore : public platform::RecordStore {
public:
    SQLiteRecordStore(std::unique_ptr<Connection> connection, const ManagedObjectModel& model)
        : connection_(std::move(connection)), model_(model) {
        for (const EntityDescription& entity : model.entities) {
            texts_.emplace(entity.name, EntitySQL(entity));
        }
    }

    Failure begin() override;
    Failure commit() override;
    void rollback() override {
        // An error may have ended the transaction already.
        if (connection_->isInTransaction()) connection_->execute("ROLLBACK");
    }

    Expected<std::vector<Record>> fetch(const FetchRequest& request) override;
    Expected<std::vector<Value>> fetchDictionaries(const FetchRequest& request) override;
    Expected<std::int64_t> count(const FetchRequest& request) override;
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
    const EntitySQL& textsOf(const EntityDescription& entity) const {
        return texts_.find(entity.name)->second;
    }
    // The statement with the condition appended and all its arguments bound.
    Expected<Statement> prepare(std::string sql, const std::vector<Value>& leading,
                                const Condition& condition, const std::string& ending);
    Failure refusal() const;
    Expected<std::int64_t> change(std::string sql, const std::vector<Value>& leading,
                                  const Condition& condition);

    std::unique_ptr<Connection> connection_;
    const ManagedObjectModel& model_;
    std::map<std::string, EntitySQL, std::less<>> texts_;
};

Condition conditionOf(const EntityDescription& entity, const FetchRequest& request) {
    if (!request.predicate) return {};
    return conditionFor(entity, *request.predicate);
}

std::string sortingOf(const FetchRequest& request) {
    if (!request.sortDescriptor) return {};
    return quoted(request.sortDescriptor->key) +
           (request.sortDescriptor->ascending ? " ASC" : " DESC") + ", ";
}

Record readRecord(const Statement& statement, const EntityDescription& entity) {
    Record record{statement.integerAt(0), statement.integerAt(1), {}};
    record.values.reserve(entity.attributes.size());
    int column = 2;
    for (const auto& attribute : entity.attributes) {
        record.values.push_back(statement.valueAt(column++, attribute.type));
    }
    return record;
}

// In the order of the attributes, checked; a missing one is absent.
std::vector<Value> checkedValues(const EntityDescription& entity,
                                 const std::vector<Value>& values) {
    std::vector<Value> checked(entity.attributes.size());
    for (std::size_t i = 0; i < checked.size() && i < values.size(); ++i) {
        checked[i] = platform::checkedValue(entity, entity.attributes[i], values[i]);
    }
    return checked;
}

Failure SQLiteRecordStore::begin() {
    // SQLite would begin one that only reads, and refuse the writes in it.
    if (connection_->isReadOnly()) {
        return storeError(StoreErrorCode::readOnly, "the store is read-only");
    }
    return connection_->execute("BEGIN IMMEDIATE");
}

Failure SQLiteRecordStore::commit() {
    Failure failure = connection_->execute("COMMIT");
    if (failure) rollback();
    return failure;
}

Expected<Statement> SQLiteRecordStore::prepare(std::string sql, const std::vector<Value>& leading,
                                               const Condition& condition,
                                               const std::string& ending) {
    if (!condition.sql.empty()) sql += " WHERE " + condition.sql;
    auto statement = connection_->prepare(sql + ending);
    if (!statement) return statement;
    for (const Value& value : leading)
        statement->bind(value);
    for (const Value& value : condition.arguments)
        statement->bind(value);
    return statement;
}

Expected<std::vector<Record>> SQLiteRecordStore::fetch(const FetchRequest& request) {
    const EntityDescription& entity = platform::checkedEntity(model_, request);
    const Condition condition = conditionOf(entity, request);
    const bool isSorted = request.sortDescriptor.has_value();
    const std::string ending =
        isSorted ? " ORDER BY " + sortingOf(request) + std::string(kIDColumn) : std::string();
    auto statement = prepare(textsOf(entity).select, {}, condition, ending);
    if (!statement) return statement.error();
    std::vector<Record> records;
    while (statement->step()) {
        records.push_back(readRecord(*statement, entity));
    }
    if (Failure failure = connection_->failure()) return *failure;
    // SQLite would copy whole rows to sort them.
    if (!isSorted) std::ranges::sort(records, {}, &Record::id);
    return records;
}

Expected<std::vector<Value>> SQLiteRecordStore::fetchDictionaries(const FetchRequest& request) {
    const EntityDescription& entity = platform::checkedEntity(model_, request);
    struct Column {
        Value key;
        AttributeType type;
    };
    std::vector<Column> columns;
    std::string list;
    const auto add = [&](const std::string& name, AttributeType type, const std::string& sql) {
        columns.push_back({name, type});
        list += sql + ", ";
    };
    const auto typeOf = [&](const std::string& name) {
        return entity.attributes[*entity.indexOf(name)].type;
    };
    for (const std::string& property : request.propertiesToFetch) {
        add(property, typeOf(property), quoted(property));
    }
    bool isAggregate = false;
    for (const ExpressionDescription& expression : request.expressionsToFetch) {
        if (expression.function.empty()) {
            add(expression.name, AttributeType::objectID, std::string(kIDColumn));
        } else {
            isAggregate = true;
            add(expression.name, typeOf(expression.keyPath),
                "max(" + quoted(expression.keyPath) + ")");
        }
    }
    // Of each group one row stands for it: SQLite takes the one with the greatest value of the
    // aggregate; where none was asked for, the latest.
    const bool isGrouped = isAggregate || !request.propertiesToGroupBy.empty();
    list += isGrouped && !isAggregate ? "max(" + std::string(kIDColumn) + ")" : "1";

    const std::string groups = joined(request.propertiesToGroupBy, quoted);
    std::string ending;
    if (!groups.empty()) ending += " GROUP BY " + groups;
    if (isGrouped) ending += " HAVING count(*) > 0";
    ending +=
        " ORDER BY " + sortingOf(request) + (groups.empty() ? std::string(kIDColumn) : groups);

    const Condition condition = conditionOf(entity, request);
    auto statement =
        prepare("SELECT " + list + " FROM " + quoted(entity.name), {}, condition, ending);
    if (!statement) return statement.error();
    std::vector<Value> rows;
    while (statement->step()) {
        Value row = Value::dictionaryWithCapacity(columns.size());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            row.setIfPresent(columns[i].key,
                             statement->valueAt(static_cast<int>(i), columns[i].type));
        }
        rows.push_back(std::move(row));
    }
    if (Failure failure = connection_->failure()) return *failure;
    return rows;
}

Expected<std::int64_t> SQLiteRecordStore::count(const FetchRequest& request) {
    const EntityDescription& entity = platform::checkedEntity(model_, request);
    const Condition condition = conditionOf(entity, request);
    auto statement = prepare("SELECT count(*) FROM " + quoted(entity.name), {}, condition, "");
    if (!statement) return statement.error();
    const bool hasRow = statement->step();
    if (Failure failure = connection_->failure()) return *failure;
    return hasRow ? statement->integerAt(0) : 0;
}

Expected<std::optional<Record>> SQLiteRecordStore::record(const EntityDescription& entity,
                                                          RecordID id) {
    auto statement = connection_->prepare(textsOf(entity).selectOne);
    if (!statement) return statement.error();
    statement->bind(id);
    std::optional<Record> found;
    if (statement->step()) found = readRecord(*statement, entity);
    if (Failure failure = connection_->failure()) return *failure;
    return found;
}

Failure SQLiteRecordStore::refusal() const {
    if (connection_->isInTransaction()) return std::nullopt;
    return storeError(StoreErrorCode::other, "no transaction is open");
}

Expected<RecordID> SQLiteRecordStore::insert(const EntityDescription& entity,
                                             const std::vector<Value>& values) {
    if (Failure failure = refusal()) return *failure;
    const std::vector<Value> checked = checkedValues(entity, values);
    auto statement = connection_->prepare(textsOf(entity).insert);
    if (!statement) return statement.error();
    for (const Value& value : checked)
        statement->bind(value);
    statement->step();
    if (Failure failure = connection_->failure()) return *failure;
    return connection_->lastInsertID();
}

Expected<std::int64_t> SQLiteRecordStore::update(const EntityDescription& entity,
                                                 const Record& record,
                                                 std::optional<std::int64_t> expectedVersion) {
    if (Failure failure = refusal()) return *failure;
    const std::vector<Value> checked = checkedValues(entity, record.values);
    const EntitySQL& texts = textsOf(entity);
    const auto write = [&](const std::string& sql) -> Expected<std::optional<std::int64_t>> {
        auto statement = connection_->prepare(sql);
        if (!statement) return statement.error();
        for (const Value& value : checked)
            statement->bind(value);
        statement->bind(record.id);
        if (expectedVersion) statement->bind(*expectedVersion);
        std::optional<std::int64_t> version;
        while (statement->step())
            version = statement->integerAt(0);
        if (Failure failure = connection_->failure()) return *failure;
        return version;
    };
    auto version = write(expectedVersion ? texts.updateExpected : texts.update);
    if (!version) return version.error();
    if (*version) return **version;
    if (expectedVersion) {
        return storeError(StoreErrorCode::mergeConflict, "the record was changed by somebody else");
    }
    auto restored = write(texts.restore);
    if (!restored) return restored.error();
    return 1;
}

Failure SQLiteRecordStore::remove(const EntityDescription& entity, RecordID id) {
    if (Failure failure = refusal()) return failure;
    auto statement = connection_->prepare(textsOf(entity).remove);
    if (!statement) return statement.error();
    statement->bind(id);
    statement->step();
    return connection_->failure();
}

Expected<std::int64_t> SQLiteRecordStore::change(std::string sql, const std::vector<Value>& leading,
                                                 const Condition& condition) {
    if (Failure failure = refusal()) return *failure;
    auto statement = prepare(std::move(sql), leading, condition, "");
    if (!statement) return statement.error();
    statement->step();
    if (Failure failure = connection_->failure()) return *failure;
    return connection_->changes();
}

Expected<std::int64_t> SQLiteRecordStore::removeMatching(const FetchRequest& request) {
    const EntityDescription& entity = platform::checkedEntity(model_, request);
    return change("DELETE FROM " + quoted(entity.name), {}, conditionOf(entity, request));
}

Expected<std::int64_t> SQLiteRecordStore::updateMatching(const FetchRequest& request,
                                                         const Value& properties) {
    const EntityDescription& entity = platform::checkedEntity(model_, request);
    std::string settings;
    std::vector<Value> values;
    for (auto& [index, value] : platform::checkedChanges(entity, properties)) {
        settings += ", " + quoted(entity.attributes[index].name) + " = ?";
        values.push_back(std::move(value));
    }
    const std::string version(kVersionColumn);
    return change(
        "UPDATE " + quoted(entity.name) + " SET " + version + " = " + version + " + 1" + settings,
        values, conditionOf(entity, request));
}

}  // namespace

std::unique_ptr<platform::RecordStore> makeRecordStore(std::unique_ptr<Connection> connection,
                                                       const ManagedObjectModel& model) {
    return std::make_unique<SQLiteRecordStore>(std::move(connection), model);
}

}  // namespace tavrolin::adapters::sqlite
