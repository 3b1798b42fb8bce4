#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/record_store.h"

struct sqlite3;
struct sqlite3_stmt;

namespace tavrolin::adapters::sqlite {

/// One use of a prepared statement: bind, step, read. Bound texts and bytes are not copied: they
/// must live until the use ends, with which the statement is ready for its next one.
class Statement {
public:
    explicit Statement(sqlite3_stmt* statement) : statement_(statement) {}
    ~Statement();
    Statement(Statement&& other) noexcept : statement_(std::exchange(other.statement_, nullptr)) {}
    Statement& operator=(Statement&&) = delete;

    void bind(const foundation::Value& value);  // to the next parameter; a wrong kind as NULL
    void bind(std::int64_t number);
    /// True while there is a row. After false, `Connection::failure` tells end from error.
    bool step();

    std::int64_t integerAt(int column) const;
    std::string_view textAt(int column) const;
    /// nil when what is stored is of another kind.
    foundation::Value valueAt(int column, platform::AttributeType type) const;

private:
    sqlite3_stmt* statement_;
    int bound_ = 0;
};

/// A database handle with its prepared statements. Threads: one at a time.
class Connection {
public:
    enum class Mode { readWrite, readOnly, immutable };

    static foundation::Expected<std::unique_ptr<Connection>> open(const std::string& path,
                                                                  Mode mode);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// The statement of this text, prepared once and kept.
    foundation::Expected<Statement> prepare(std::string_view sql);
    /// A text without parameters or results that is worth keeping prepared.
    foundation::Failure execute(std::string_view sql);
    foundation::Expected<std::int64_t> integer(std::string_view sql);

    /// Why the last step ended; nothing when it reached the end or a row.
    foundation::Failure failure() const;
    bool isInTransaction() const;
    bool isReadOnly() const;
    std::int64_t changes() const;
    std::int64_t lastInsertID() const;

private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };

    explicit Connection(sqlite3* database) : database_(database) {}

    std::unique_ptr<sqlite3, Closer> database_;
    std::uint64_t commits_ = 0;
    std::map<std::string, std::unique_ptr<sqlite3_stmt, Finalizer>, std::less<>> statements_;
};

}  // namespace tavrolin::adapters::sqlite
