#include "adapters/sqlite/sqlite_record_stores.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "adapters/sqlite/connection.h"
#include "adapters/sqlite/predicate_sql.h"
#include "adapters/sqlite/sqlite_record_store.h"

namespace tavrolin::adapters::sqlite {

using foundation::Error;
using foundation::Expected;
using foundation::Failure;
using platform::AttributeDescription;
using platform::AttributeType;
using platform::EntityDescription;
using platform::ManagedObjectModel;
using platform::StoreDescription;
using platform::storeError;
using platform::StoreErrorCode;

namespace {

// In the file's header: says that the file is a store of this library, and of which model.
constexpr std::int64_t kApplicationID = 0x54415652;  // "TAVR"

std::string_view columnType(AttributeType type) {
    switch (type) {
        case AttributeType::integer:
        case AttributeType::boolean:
        case AttributeType::objectID:
            return "INTEGER";
        case AttributeType::real:
        case AttributeType::date:
            return "REAL";
        case AttributeType::string:
            return "TEXT";
        case AttributeType::data:
        case AttributeType::transformable:
            return "BLOB";
    }
    return "BLOB";
}

bool isBytes(const AttributeDescription& attribute) {
    return columnType(attribute.type) == "BLOB";
}

std::string columnDefinition(const AttributeDescription& attribute) {
    return quoted(attribute.name) + " " + std::string(columnType(attribute.type));
}

std::string createTable(const EntityDescription& entity) {
    std::string sql = "CREATE TABLE IF NOT EXISTS " + quoted(entity.name) + " (" +
                      // An identifier is never given twice: a holder of a deleted record must not
                      // meet another one under it.
                      std::string(kIDColumn) + " INTEGER PRIMARY KEY AUTOINCREMENT, " +
                      std::string(kVersionColumn) + " INTEGER NOT NULL";
    // Large columns come last, so that the small ones are read without them.
    for (const bool large : {false, true}) {
        for (const AttributeDescription& attribute : entity.attributes) {
            if (isBytes(attribute) == large) sql += ", " + columnDefinition(attribute);
        }
    }
    return sql + ")";
}

std::string indexName(const EntityDescription& entity, const std::vector<std::string>& attributes) {
    std::string name = entity.name;
    for (const std::string& attribute : attributes)
        name += "_" + attribute;
    return quoted(name);
}

std::string createIndex(const EntityDescription& entity,
                        const std::vector<std::string>& attributes) {
    std::string columns;
    for (const std::string& attribute : attributes)
        columns += (columns.empty() ? "" : ", ") + quoted(attribute);
    return "CREATE INDEX IF NOT EXISTS " + indexName(entity, attributes) + " ON " +
           quoted(entity.name) + " (" + columns + ")";
}

// What makes the entity's indexes, and takes away those of an older version. An index that no
// predicate needs any more costs every write, and may be taken in place of a better one.
std::vector<std::string> indexStatements(const EntityDescription& entity) {
    std::vector<std::string> statements;
    for (const AttributeDescription& attribute : entity.attributes) {
        const std::vector<std::string> single = {attribute.name};
        statements.push_back(attribute.isIndexed
                                 ? createIndex(entity, single)
                                 : "DROP INDEX IF EXISTS " + indexName(entity, single));
    }
    for (const auto& attributes : entity.compoundIndexes)
        statements.push_back(createIndex(entity, attributes));
    return statements;
}

// A number that differs when the model does (FNV-1a over what the file holds of it), never 0.
std::int64_t signatureOf(const ManagedObjectModel& model) {
    std::uint32_t hash = 2166136261U;
    const auto add = [&hash](const std::string& text) {
        for (const char c : text)
            hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    };
    for (const EntityDescription& entity : model.entities) {
        add(createTable(entity));
        for (const std::string& statement : indexStatements(entity))
            add(statement);
    }
    return static_cast<std::int64_t>((hash & 0x7fffffffU) | 1U);
}

// --- Files ---------------------------------------------------------------------------------------

Error systemError(StoreErrorCode code, const std::string& what, const std::string& path) {
    return storeError(
        errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? StoreErrorCode::full : code,
        what + " " + path, std::strerror(errno));
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

// So that the name of a new file or folder survives the machine.
void syncFolder(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

Failure makeFolders(const std::string& folder) {
    struct stat status {};
    if (folder == "/" || ::stat(folder.c_str(), &status) == 0) return std::nullopt;
    if (Failure failure = makeFolders(folderOf(folder))) return failure;
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        return systemError(StoreErrorCode::readOnly, "can't make the folder", folder);
    }
    syncFolder(folderOf(folder));
    return std::nullopt;
}

// Tells missing from unreadable, and makes what is missing.
Failure prepareFile(const std::string& path, bool isReadOnly) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        if (S_ISREG(status.st_mode)) return std::nullopt;
        return storeError(StoreErrorCode::unreadable, "no file: " + path);
    }
    if (errno != ENOENT) return systemError(StoreErrorCode::unreadable, "can't read", path);
    if (isReadOnly) return systemError(StoreErrorCode::missing, "there is no store at", path);
    if (Failure failure = makeFolders(folderOf(path))) return failure;
    // SQLite takes the permissions of its other files from this one.
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return systemError(errno == EACCES ? StoreErrorCode::readOnly : StoreErrorCode::unreadable,
                           "can't make", path);
    }
    ::close(descriptor);
    syncFolder(folderOf(path));
    return std::nullopt;
}

// --- The schema ----------------------------------------------------------------------------------

class Schema {
public:
    Schema(Connection& connection, const ManagedObjectModel& model,
           const StoreDescription& description)
        : connection_(connection),
          model_(model),
          description_(description),
          signature_(signatureOf(model)) {}

    /// Makes sure that the file is ours and has what the model has.
    Failure check();

private:
    enum class Content { current, older, empty };

    Expected<Content> content();
    Expected<Content> contentInTransaction();
    Failure useWriteAheadLog();
    Failure update();
    Failure updateInTransaction();
    Expected<bool> addMissingColumns(const EntityDescription& entity);

    Connection& connection_;
    const ManagedObjectModel& model_;
    const StoreDescription& description_;
    const std::int64_t signature_;
};

Failure Schema::check() {
    auto found = content();
    if (!found) return found.error();
    if (*found == Content::current) return std::nullopt;
    if (description_.isReadOnly) {
        return storeError(
            *found == Content::empty ? StoreErrorCode::missing : StoreErrorCode::readOnly,
            "the store lacks what this version keeps, and may not be changed");
    }
    const bool mayMigrate = description_.shouldMigrateStoreAutomatically &&
                            description_.shouldInferMappingModelAutomatically;
    if (*found == Content::older && !mayMigrate) {
        return storeError(StoreErrorCode::other, "the store was made by another version");
    }
    if (*found == Content::empty) {
        if (Failure failure = useWriteAheadLog()) return failure;
    }
    return update();
}

// The answers must be of one moment: another process may be making the store meanwhile.
Expected<Schema::Content> Schema::content() {
    if (connection_.isInTransaction()) return contentInTransaction();
    if (Failure failure = connection_.execute("BEGIN")) return *failure;
    auto found = contentInTransaction();
    if (Failure failure = connection_.execute("COMMIT"); failure && found) return *failure;
    return found;
}

Expected<Schema::Content> Schema::contentInTransaction() {
    auto application = connection_.integer("PRAGMA application_id");
    if (!application) return application.error();
    auto version = connection_.integer("PRAGMA user_version");
    if (!version) return version.error();
    if (*application == kApplicationID) {
        return *version == signature_ ? Content::current : Content::older;
    }
    auto tables = connection_.integer("SELECT count(*) FROM sqlite_schema");
    if (!tables) return tables.error();
    if (*application == 0 && *version == 0 && *tables == 0) return Content::empty;
    return storeError(StoreErrorCode::foreign, "the file is somebody else's database",
                      "its application identifier is " + std::to_string(*application));
}

// The switch needs the file for itself for a moment and, unlike a transaction, does not wait for
// it. It stays in the file, so only the first ones to open it come here.
Failure Schema::useWriteAheadLog() {
    using namespace std::chrono_literals;
    Failure failure;
    for (auto waited = 0ms; waited < 5s; waited += 2ms) {
        failure = connection_.execute("PRAGMA journal_mode = WAL");
        if (!failure || failure->code != static_cast<std::int64_t>(StoreErrorCode::busy)) break;
        std::this_thread::sleep_for(2ms);
    }
    return failure;
}

Failure Schema::update() {
    if (Failure failure = connection_.execute("BEGIN IMMEDIATE")) return failure;
    Failure failure = updateInTransaction();
    if (!failure) failure = connection_.execute("COMMIT");
    if (failure && connection_.isInTransaction()) connection_.execute("ROLLBACK");
    return failure;
}

Failure Schema::updateInTransaction() {
    auto found = content();  // somebody may have been faster
    if (!found) return found.error();
    if (*found == Content::current) return std::nullopt;
    for (const EntityDescription& entity : model_.entities) {
        if (Failure failure = connection_.execute(createTable(entity))) return failure;
        if (*found == Content::older) {
            auto added = addMissingColumns(entity);
            if (!added) return added.error();
        }
        for (const std::string& statement : indexStatements(entity)) {
            if (Failure failure = connection_.execute(statement)) return failure;
        }
    }
    if (Failure failure =
            connection_.execute("PRAGMA application_id = " + std::to_string(kApplicationID))) {
        return failure;
    }
    return connection_.execute("PRAGMA user_version = " + std::to_string(signature_));
}

Expected<bool> Schema::addMissingColumns(const EntityDescription& entity) {
    bool added = false;
    for (const AttributeDescription& attribute : entity.attributes) {
        auto statement =
            connection_.prepare("SELECT count(*) FROM pragma_table_info(?) WHERE name = ?");
        if (!statement) return statement.error();
        const foundation::Value table = entity.name;
        const foundation::Value column = attribute.name;
        statement->bind(table);
        statement->bind(column);
        if (!statement->step()) return *connection_.failure();
        if (statement->integerAt(0) > 0) continue;
        added = true;
        if (Failure failure = connection_.execute("ALTER TABLE " + quoted(entity.name) +
                                                  " ADD COLUMN " + columnDefinition(attribute))) {
            return *failure;
        }
    }
    return added;
}

}  // namespace

Expected<std::unique_ptr<platform::RecordStore>> SQLiteRecordStores::open(
    const ManagedObjectModel& model, const StoreDescription& description) {
    const std::string path = description.url.path();
    if (!description.url.isFileURL() || path.empty() || path.find('\0') != std::string::npos) {
        return storeError(StoreErrorCode::missing, "no file: " + description.url.absoluteString());
    }
    if (Failure failure = prepareFile(path, description.isReadOnly)) return *failure;

    const auto mode =
        description.isReadOnly ? Connection::Mode::readOnly : Connection::Mode::readWrite;
    auto connection = Connection::open(path, mode);
    Failure failure;
    if (!connection) {
        failure = connection.error();
    } else {
        failure = Schema(**connection, model, description).check();
    }
    // SQLite wants to make its coordination files even to read. In a folder where it can't, nobody
    // writes either unless they are there already, and the file can be read as it lies.
    if (failure && description.isReadOnly && ::access((path + "-wal").c_str(), F_OK) != 0 &&
        ::access(folderOf(path).c_str(), W_OK) != 0) {
        connection = Connection::open(path, Connection::Mode::immutable);
        if (!connection) return connection.error();
        failure = Schema(**connection, model, description).check();
    }
    if (failure) return *failure;
    if (Failure notSynced = (*connection)->execute("PRAGMA synchronous = FULL")) return *notSynced;
    return makeRecordStore(std::move(*connection), model);
}

}  // namespace tavrolin::adapters::sqlite
