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
/// Invalid UTF-8 in a text is replaced by U+FFFD. What goes deeper than 1,024 levels raises
/// `Exception`, since no reader would take it back.
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
        endArray();
    }

private:
    explicit KeyedArchiver(bool secure) : secure_(secure) {}
    void beginArray(std::string_view key, std::size_t count);
    void element(const Archivable* record);
    void endArray();
    void writeRecord(const Archivable& record);
    void writeValue(const Value& value);
    void writeText(std::string_view text);
    void writeFloat(double number);
    void writeHead(unsigned major, std::uint64_t argument);
    void writeByte(std::uint8_t byte);
    void enter();
    // Where the next bytes go; there is room for `size` of them.
    std::uint8_t* room(std::size_t size) {
        if (bytes_.size() - size_ < size) grow(size);
        return bytes_.data() + size_;
    }
    void grow(std::size_t size);
    std::vector<std::uint8_t> finish();

    std::vector<std::uint8_t> bytes_;  // the room; what is written is its first `size_` bytes
    std::size_t size_ = 0;
    std::uint64_t fields_ = 0;  // of the record that is being written, so far
    int depth_ = 0;
    bool secure_;
};

/// Reads what `KeyedArchiver` wrote; every byte is taken as hostile. Bytes that are no archive,
/// that go deeper than 1,024 levels, that promise more than they hold or that trail behind raise
/// `Exception` (InvalidArchiveOperationException).
///
/// The strict reader raises when a value is of another class than declared; the other one hands
/// over what is there. A record where a plain value is asked for raises in both.
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
        Field* field = find(key);
        return field == nullptr ? nullptr : record<T>(field->value, field->end);
    }
    /// The elements that are records of the class, in order.
    template <class T>
    std::vector<Ref<T>> decodeRecords(std::string_view key) {
        std::vector<Ref<T>> result;
        Field* field = find(key);
        if (field == nullptr) return result;
        const std::uint8_t* at = field->value;
        for (std::size_t left = enterArray(at); left > 0; --left) {
            const std::uint8_t* end = nullptr;
            if (Ref<T> item = record<T>(at, end)) result.push_back(std::move(item));
            at = end != nullptr ? end : past(at);
        }
        if (at != field->value) field->end = at;
        return result;
    }
    bool contains(std::string_view key) {
        const Field* field = find(key);
        if (field == nullptr) return false;
        next_ = static_cast<std::size_t>(field - fields_);  // whoever asks mostly reads it next
        return true;
    }

private:
    // One field of the record that is being read. Where its value ends is found out by reading it,
    // or else when the field behind it is wanted.
    struct Field {
        const char* key;
        std::size_t keyLength;
        const std::uint8_t* value;
        const std::uint8_t* end;

        bool is(std::string_view other) const { return std::string_view(key, keyLength) == other; }
    };
    static constexpr std::size_t kFew = 32;

    KeyedUnarchiver(Value::Bytes bytes, Mode mode);
    KeyedUnarchiver(const std::uint8_t* map, Mode mode) : mode_(mode) { enterMap(map); }
    bool rootIs(std::string_view className);
    void enterMap(const std::uint8_t* map);
    Field* find(std::string_view key);
    void takeNext();
    static const std::uint8_t* endOf(Field& field);
    /// Where the record ends.
    const std::uint8_t* finish();
    /// Moves to the first element; 0 when this is no array.
    static std::size_t enterArray(const std::uint8_t*& at);
    /// The place behind the item.
    static const std::uint8_t* past(const std::uint8_t* at);
    /// The map of a record of the class; null when this is something else.
    static const std::uint8_t* mapOf(const std::uint8_t* at, std::string_view className);
    /// Sets `end` when a record was read.
    template <class T>
    Ref<T> record(const std::uint8_t* at, const std::uint8_t*& end) {
        const std::uint8_t* map = mapOf(at, T::kClassName);
        if (map == nullptr) return nullptr;
        KeyedUnarchiver reader(map, mode_);
        Ref<T> result = T::initWithCoder(reader);
        end = reader.finish();
        return result;
    }

    const std::uint8_t* root_ = nullptr;
    const std::uint8_t* first_ = nullptr;  // the first field's key
    std::size_t count_ = 0;                // of the fields
    std::size_t known_ = 0;                // how many of them have been met
    std::size_t next_ = 0;  // the one after the last one found: fields mostly come in order
    Field* fields_ = nullptr;
    std::unique_ptr<Field[]> many_;
    Field few_[kFew];  // left as it is: only the known ones are read
    Mode mode_;
};

}  // namespace tavrolin::foundation
