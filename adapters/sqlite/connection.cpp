#include "adapters/sqlite/connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <span>
#include <thread>

#include "adapters/sqlite/text_match.h"

namespace tavrolin::adapters::sqlite {

using foundation::Expected;
using foundation::Failure;
using foundation::Value;
using platform::AttributeType;
using platform::storeError;
using platform::StoreErrorCode;

namespace {

// The log is written back when it is this long. Whoever opens a store that nobody has open reads
// the log first, and every push starts a process that does; so the first commit of a connection
// keeps the log short, while one that goes on writing is not slowed down.
constexpr int kLongLog = 1000;
constexpr int kLongLogAtFirst = 64;

int didCommit(void* commits, sqlite3* database, const char* name, int pages) {
    const bool isFirst = ++*static_cast<std::uint64_t*>(commits) == 1;
    if (pages >= (isFirst ? kLongLogAtFirst : kLongLog)) {
        // Passive: what others still read stays. A failure costs nothing but the log's length.
        sqlite3_wal_checkpoint_v2(database, name, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    }
    return SQLITE_OK;
}

constexpr std::size_t kKeptStatements = 64;

bool saysFull(int systemError) {
    return systemError == ENOSPC || systemError == EFBIG || systemError == EDQUOT;
}

StoreErrorCode codeOf(int result, bool isFull) {
    switch (result & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return StoreErrorCode::busy;
        case SQLITE_FULL:
            return StoreErrorCode::full;
        case SQLITE_READONLY:
            return StoreErrorCode::readOnly;
        case SQLITE_CANTOPEN:
        case SQLITE_IOERR:
            if (isFull) return StoreErrorCode::full;
            return (result & 0xff) == SQLITE_IOERR ? StoreErrorCode::other
                                                   : StoreErrorCode::unreadable;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return StoreErrorCode::unreadable;
        default:
            return StoreErrorCode::other;
    }
}

foundation::Error errorOf(sqlite3* database) {
    // SQLite does not keep the system's reason when a commit fails, but it is still there.
    const bool isFull = saysFull(errno) || saysFull(sqlite3_system_errno(database));
    const int result = sqlite3_extended_errcode(database);
    return storeError(codeOf(result, isFull), sqlite3_errmsg(database),
                      std::string(sqlite3_errstr(result)) + " (" + std::to_string(result) + ")");
}

// The handler that SQLite brings sleeps up to 100 ms at a time, which makes a short wait long.
int waitForOther(void* /*unused*/, int attempts) {
    using namespace std::chrono_literals;
    constexpr auto kTimeout = 5s;
    constexpr auto kShort = 500us;  // the first 100 times
    constexpr auto kLong = 5ms;
    constexpr int kShortOnes = 100;
    if (attempts >= kShortOnes + (kTimeout - kShort * kShortOnes) / kLong) return 0;
    std::this_thread::sleep_for(attempts < kShortOnes ? std::chrono::microseconds(kShort)
                                                      : std::chrono::microseconds(kLong));
    return 1;
}

std::string_view textOf(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return {text == nullptr ? "" : text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// tavrolin_match(left, right, operator, ignoresCase); false when a side is no text.
void matchFunction(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
    const bool areTexts = sqlite3_value_type(arguments[0]) == SQLITE_TEXT &&
                          sqlite3_value_type(arguments[1]) == SQLITE_TEXT;
    const bool result =
        areTexts &&
        textMatches(textOf(arguments[0]), textOf(arguments[1]),
                    static_cast<foundation::Predicate::Operator>(sqlite3_value_int(arguments[2])),
                    sqlite3_value_int(arguments[3]) != 0);
    sqlite3_result_int(context, static_cast<int>(result));
}

}  // namespace

// --- Statement -----------------------------------------------------------------------------------

Statement::~Statement() {
    if (statement_ == nullptr) return;
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void Statement::bind(std::int64_t number) {
    sqlite3_bind_int64(statement_, ++bound_, number);
}

void Statement::bind(const Value& value) {
    const int index = ++bound_;
    switch (value.kind()) {
        case Value::Kind::boolean:
        case Value::Kind::integer:
            if (value.isUnsigned()) {
                sqlite3_bind_double(statement_, index, value.doubleValue());
            } else {
                sqlite3_bind_int64(statement_, index, value.integerValue());
            }
            return;
        case Value::Kind::real:
            sqlite3_bind_double(statement_, index, value.doubleValue());
            return;
        case Value::Kind::date:
            sqlite3_bind_double(statement_, index, value.date().secondsSince1970);
            return;
        case Value::Kind::string:
            sqlite3_bind_text64(statement_, index, value.string().data(), value.string().size(),
                                SQLITE_STATIC, SQLITE_UTF8);
            return;
        case Value::Kind::data: {
            // A null pointer would bind NULL; empty bytes are not absent.
            const Value::Bytes bytes = value.bytes();
            sqlite3_bind_blob64(statement_, index,
                                bytes.empty() ? "" : static_cast<const void*>(bytes.data()),
                                bytes.size(), SQLITE_STATIC);
            return;
        }
        default:
            sqlite3_bind_null(statement_, index);
    }
}

bool Statement::step() {
    errno = 0;
    return sqlite3_step(statement_) == SQLITE_ROW;
}

std::int64_t Statement::integerAt(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::string_view Statement::textAt(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return {text == nullptr ? "" : text,
            static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

Value Statement::valueAt(int column, AttributeType type) const {
    const int stored = sqlite3_column_type(statement_, column);
    const bool isNumber = stored == SQLITE_INTEGER || stored == SQLITE_FLOAT;
    switch (type) {
        case AttributeType::integer:
        case AttributeType::objectID:
            return stored == SQLITE_INTEGER ? Value(integerAt(column)) : Value();
        case AttributeType::boolean:
            return isNumber ? Value(sqlite3_column_int64(statement_, column) != 0) : Value();
        case AttributeType::real:
            return isNumber ? Value(sqlite3_column_double(statement_, column)) : Value();
        case AttributeType::date:
            return isNumber ? Value(foundation::Date{sqlite3_column_double(statement_, column)})
                            : Value();
        case AttributeType::string:
            return stored == SQLITE_TEXT ? Value(textAt(column)) : Value();
        case AttributeType::data:
        case AttributeType::transformable: {
            if (stored != SQLITE_BLOB) return {};
            const auto* bytes =
                static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
            return Value::data(
                {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))});
        }
    }
    return {};
}

// --- Connection ----------------------------------------------------------------------------------

void Connection::Closer::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

void Connection::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Connection::~Connection() = default;

Expected<std::unique_ptr<Connection>> Connection::open(const std::string& path, Mode mode) {
    int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE;
    flags |= mode == Mode::readWrite ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
    std::string name = path;
    if (mode == Mode::immutable) {
        flags |= SQLITE_OPEN_URI;
        name = foundation::URL::fileURLWithPath(path).absoluteString() + "?immutable=1";
    }
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &handle, flags, nullptr);
    std::unique_ptr<Connection> connection(new Connection(handle));
    if (handle == nullptr) return storeError(StoreErrorCode::other, "out of memory");
    if (result != SQLITE_OK) return errorOf(handle);
    sqlite3_busy_handler(handle, waitForOther, nullptr);
    sqlite3_wal_hook(handle, didCommit, &connection->commits_);
    // The file may come from anybody: nothing that is stored in it is run.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_create_function(handle, "tavrolin_match", 4,
                            SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, nullptr,
                            matchFunction, nullptr, nullptr);
    return connection;
}

Expected<Statement> Connection::prepare(std::string_view sql) {
    if (const auto found = statements_.find(sql); found != statements_.end()) {
        return Statement(found->second.get());
    }
    if (statements_.size() >= kKeptStatements) statements_.clear();  // none is in use here
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v3(database_.get(), sql.data(), static_cast<int>(sql.size()),
                                          SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (result != SQLITE_OK) return errorOf(database_.get());
    statements_.emplace(sql, statement);
    return Statement(statement);
}

Failure Connection::execute(std::string_view sql) {
    auto statement = prepare(sql);
    if (!statement) return statement.error();
    while (statement->step()) {
    }
    return failure();
}

Expected<std::int64_t> Connection::integer(std::string_view sql) {
    auto statement = prepare(sql);
    if (!statement) return statement.error();
    if (!statement->step()) return errorOf(database_.get());
    return statement->integerAt(0);
}

Failure Connection::failure() const {
    const int result = sqlite3_errcode(database_.get()) & 0xff;
    if (result == SQLITE_OK || result == SQLITE_DONE || result == SQLITE_ROW) return std::nullopt;
    return errorOf(database_.get());
}

bool Connection::isInTransaction() const {
    return sqlite3_get_autocommit(database_.get()) == 0;
}

bool Connection::isReadOnly() const {
    return sqlite3_db_readonly(database_.get(), "main") == 1;
}

std::int64_t Connection::changes() const {
    return sqlite3_changes64(database_.get());
}

std::int64_t Connection::lastInsertID() const {
    return sqlite3_last_insert_rowid(database_.get());
}

}  // namespace tavrolin::adapters::sqlite
