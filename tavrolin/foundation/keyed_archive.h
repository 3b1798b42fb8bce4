#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin::foundation {

class KeyedArchiver;
class KeyedUnarchiver;

template <class T>
using Ref = std::shared_ptr<T>;

/// A record that archives itself field by field. Records are shared and changed by their holders.
class Archivable {
public:
    virtual ~Archivable() = default;

    /// The name under which the class is archived.
    virtual std::string_view className() const = 0;
    virtual void encodeWithCoder(KeyedArchiver& coder) const = 0;
    virtual bool supportsSecureCoding() const = 0;
};

/// What an archive's reader expects at a key; only a strict reader looks.
enum class Declared { string, number, dictionary, array, data, date, any };

/// Writes a record as bytes: CBOR (RFC 8949). A record is tag 27 over [class name, {key: value}];
/// texts, integers, floats, booleans, null, arrays, maps and byte strings are themselves; a date is
/// tag 1 over a float of seconds since 1970. nil leaves its key out. A map's keys keep their order.
class KeyedArchiver {
public:
    /// With secure coding required, a record that doesn't support it raises `Exception`.
    static std::vector<std::uint8_t> archivedData(const Archivable& root,
                                                  bool requiringSecureCoding);
    static std::vector<std::uint8_t> archivedData(const Value& root);

    void encode(std::string_view key, const Value& value);
    void encode(std::string_view key, const Archivable* record);
    template <class T>
    void encode(std::string_view key, const std::vector<Ref<T>>& records) {
        beginArray(key, records.size());
        for (const auto& record : records)
            element(record.get());
    }

private:
    explicit KeyedArchiver(bool secure) : secure_(secure) {}
    void beginArray(std::string_view key, std::size_t count);
    void element(const Archivable* record);
    void writeKey(std::string_view key);
    void writeRecord(const Archivable& record);

    std::vector<std::uint8_t> bytes_;
    bool secure_;
};

/// Reads what `KeyedArchiver` wrote; every byte is taken as hostile. Bytes that are no archive,
/// that go deeper than 64 levels, that promise more than they hold or that trail behind raise
/// `Exception` (InvalidArchiveOperationException).
///
/// The strict reader raises when a value is of another class than declared; the other one hands
/// over what is there.
class KeyedUnarchiver {
public:
    enum class Mode { strict, lenient };

    /// The record at the archive's root, made by its class's `initWithCoder`; null when the root is
    /// of another class than `T`. `T` has `kClassName` and `static Ref<T>
    /// initWithCoder(KeyedUnarchiver&)`.
    template <class T>
    static Ref<T> unarchive(Value::Bytes bytes, Mode mode = Mode::lenient) {
        KeyedUnarchiver reader(bytes, mode);
        if (!reader.rootIs(T::kClassName)) return nullptr;
        return T::initWithCoder(reader);
    }
    /// The plain value at the root; raises when it is a record.
    static Value unarchiveValue(Value::Bytes bytes);

    /// nil when the key is missing. Raises in strict mode for another kind than declared.
    Value decode(std::string_view key, Declared declared);
    /// Null when the key is missing or holds something else.
    template <class T>
    Ref<T> decodeRecord(std::string_view key) {
        Cursor cursor = find(key);
        return record<T>(cursor);
    }
    template <class T>
    std::vector<Ref<T>> decodeRecords(std::string_view key) {
        std::vector<Ref<T>> result;
        Cursor cursor = find(key);
        for (std::size_t left = enterArray(cursor); left > 0; --left) {
            if (Ref<T> item = record<T>(cursor)) result.push_back(std::move(item));
        }
        return result;
    }
    bool contains(std::string_view key);

private:
    // A place in the bytes, and how deep it is.
    struct Cursor {
        const std::uint8_t* at = nullptr;
        const std::uint8_t* end = nullptr;
        int depth = 0;
    };

    KeyedUnarchiver(Value::Bytes bytes, Mode mode);
    KeyedUnarchiver(Cursor map, Mode mode);
    bool rootIs(std::string_view className);
    Cursor find(std::string_view key);
    std::size_t enterArray(Cursor& cursor);
    /// Moves past the item; when it is a record of the class, `map` becomes its fields.
    bool takeRecord(Cursor& cursor, std::string_view className, Cursor& map);
    template <class T>
    Ref<T> record(Cursor& cursor) {
        Cursor map;
        if (!takeRecord(cursor, T::kClassName, map)) return nullptr;
        KeyedUnarchiver reader(map, mode_);
        return T::initWithCoder(reader);
    }

    Cursor map_;   // the fields of the record that is being read
    Cursor next_;  // where the field after the last one found lies: fields mostly come in order
    std::size_t left_ = 0;
    Mode mode_;
};

}  // namespace tavrolin::foundation
