#pragma once

#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "tavrolin/foundation/date.h"

namespace tavrolin::foundation {

/// An untyped value: what a payload, a property list, a preference or an event is made of.
///
/// 16 bytes. Texts of up to 14 bytes lie inside; everything larger is a shared block that is copied
/// when one of several holders changes it. Copying is O(1) and never raises. A dictionary keeps the
/// order in which its keys came; setting a key again keeps its place.
///
/// Looking something up in nil gives nil, 0, false or an empty text. Asking a value of another kind
/// for something that it can't do, an index out of range and putting nil into a collection raise
/// `Exception`.
///
/// Threads: distinct Values may be used on distinct threads at once, also when they share a block;
/// one Value object is as safe as an int.
class Value {
public:
    enum class Kind : std::uint8_t {
        nil,
        null,
        boolean,
        integer,
        real,
        string,
        data,
        date,
        array,
        dictionary
    };
    using Bytes = std::span<const std::uint8_t>;
    struct Entry;  // {key, value} of a dictionary; the key is always a string

    // --- Making ---------------------------------------------------------------------------------
    constexpr Value() noexcept = default;  // nil
    Value(const Value& other) noexcept {
        if (other.hasBlock()) other.retain();
        std::memcpy(bytes_, other.bytes_, sizeof bytes_);
    }
    Value(Value&& other) noexcept {
        std::memcpy(bytes_, other.bytes_, sizeof bytes_);
        std::memset(other.bytes_, 0, sizeof bytes_);
    }
    Value& operator=(const Value& other) noexcept {
        Value copy(other);
        std::swap(bytes_, copy.bytes_);
        return *this;
    }
    Value& operator=(Value&& other) noexcept {  // leaves nil behind, as the constructor does
        Value taken(std::move(other));
        std::swap(bytes_, taken.bytes_);
        return *this;
    }
    ~Value() {
        if (hasBlock()) release();
    }

    template <class T>
    requires std::is_arithmetic_v<T> Value(T number)
    noexcept {  // implicit: a number is a value
        if constexpr (std::is_same_v<T, bool>) {
            setScalar(Kind::boolean, static_cast<std::int64_t>(number));
        } else if constexpr (std::is_floating_point_v<T>) {
            setReal(static_cast<double>(number));
        } else if constexpr (std::is_unsigned_v<T> && sizeof(T) == 8) {
            setUnsigned(static_cast<std::uint64_t>(number));
        } else {
            setScalar(Kind::integer, static_cast<std::int64_t>(number));
        }
    }
    Value(std::string_view text) {
        if (text.size() <= kInlineText) {
            setShortText(text);
        } else {
            setLongText(text);
        }
    }
    Value(const std::string& text) : Value(std::string_view(text)) {}
    Value(const char* text);  // a null pointer makes nil
    Value(Date date) noexcept;

    static Value null() noexcept;
    static Value data(Bytes bytes);
    static Value array(std::initializer_list<Value> items = {});
    static Value arrayWithCapacity(std::size_t capacity);
    static Value dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries = {});
    static Value dictionaryWithCapacity(std::size_t capacity);

    // --- Asking what it is ----------------------------------------------------------------------
    Kind kind() const noexcept { return static_cast<Kind>(tag() >> 4U); }
    bool isNil() const noexcept { return tag() == 0; }
    bool isNull() const noexcept { return kind() == Kind::null; }
    bool isString() const noexcept { return kind() == Kind::string; }
    bool isNumber() const noexcept;  // boolean, integer or real
    bool isArray() const noexcept { return kind() == Kind::array; }
    bool isDictionary() const noexcept { return kind() == Kind::dictionary; }
    bool isUnsigned() const noexcept;  // an integer above the largest signed one
    explicit operator bool() const noexcept { return !isNil(); }  // present?

    /// The kind in words, with its article: "a string", "an array", "nil".
    static std::string_view kindName(Kind kind) noexcept;

    // --- Reading (nil answers with the empty result; another kind raises) ------------------------
    std::string_view string() const {
        if (isString()) {
            const unsigned low = tag() & 15U;
            if (low != kSharedText) return {reinterpret_cast<const char*>(bytes_), low};
            return static_cast<const BytesBlock*>(block())->view();
        }
        if (isNil()) return {};
        refuse("its text");
    }
    std::size_t length() const { return string().size(); }  // in bytes of UTF-8
    Bytes bytes() const;
    Date date() const;
    /// Numbers are converted; a text is read as far as it is a number ("12ab" is 12, "ab" is 0).
    std::int64_t integerValue() const;
    double doubleValue() const;
    /// A text is true when it begins, after blanks, sign and zeros, with Y, y, T, t or 1 to 9.
    bool boolValue() const;
    std::size_t count() const;      // of an array or a dictionary
    Value lowercaseString() const;  // ASCII letters only; nil stays nil

    /// nil when the key is absent.
    const Value& operator[](std::string_view key) const {
        return key.size() <= kInlineText ? lookUpShort(Value(key)) : lookUp(key);
    }
    const Value& at(std::size_t index) const;  // raises beyond the end, also on nil
    std::span<const Value> items() const;      // an array's elements
    std::span<const Entry> entries() const;    // a dictionary's entries, in order

    // --- Changing (nil becomes a collection; another kind raises; shared blocks are copied first)
    // -
    void append(Value item);
    void set(Value key, Value value);
    /// Does nothing for nil; otherwise as `set`.
    void setIfPresent(Value key, Value value) {
        if (!value.isNil()) set(std::move(key), std::move(value));
    }
    bool remove(std::string_view key);  // true when it was there

    // --- Comparing and printing ------------------------------------------------------------------
    /// Deep. Numbers are equal by value whatever their kind; a dictionary's order does not count.
    friend bool operator==(const Value& a, const Value& b);

    /// For log lines: a text as it stands, a number in digits, collections like JSON, "(null)" for
    /// nil.
    std::string description() const;

private:
    struct Block {
        std::atomic<std::uint32_t> holders{1};

        bool shared() const noexcept { return holders.load(std::memory_order_acquire) != 1; }
    };
    // A text or data: the bytes follow the header.
    struct BytesBlock : Block {
        std::size_t size = 0;

        char* text() noexcept { return reinterpret_cast<char*>(this + 1); }
        std::string_view view() const noexcept {
            return {reinterpret_cast<const char*>(this + 1), size};
        }
        static BytesBlock* make(const void* bytes, std::size_t size);
    };
    struct ArrayBlock;
    struct DictionaryBlock;

    // The last byte is the tag: the kind in the upper half; for a short text its length below.
    // `kSharedText` there says that the text is a block; `kUnsigned` marks a large integer.
    static constexpr unsigned kSharedText = 15;
    static constexpr std::size_t kInlineText = 14;
    static constexpr unsigned kUnsigned = 1;

    unsigned tag() const noexcept { return bytes_[15]; }
    void setTag(Kind kind, unsigned low = 0) noexcept {
        bytes_[15] = static_cast<std::uint8_t>((static_cast<unsigned>(kind) << 4U) | low);
    }
    void setScalar(Kind kind, std::int64_t number) noexcept;
    void setReal(double number) noexcept;
    void setUnsigned(std::uint64_t number) noexcept;
    std::int64_t scalar() const noexcept;
    double realScalar() const noexcept;
    Block* block() const noexcept {
        Block* held = nullptr;
        std::memcpy(&held, bytes_, sizeof held);
        return held;
    }
    void setBlock(Kind kind, Block* block, unsigned low = 0) noexcept;
    // Asked whenever a Value is copied or dies, hence two comparisons of the tag: everything from a
    // shared text upwards has a block, but for a date.
    bool hasBlock() const noexcept {
        static_assert(static_cast<int>(Kind::string) == 5 && static_cast<int>(Kind::date) == 7);
        return tag() >= 0x5F && tag() >> 4U != 7;
    }
    void retain() const noexcept { block()->holders.fetch_add(1, std::memory_order_relaxed); }
    // A sole holder needs no atomic subtraction, since nobody else can become one meanwhile.
    void release() noexcept {
        if (!block()->shared() || block()->holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
            destroyBlock();
    }
    void destroyBlock() noexcept;
    // Put together in two words: of a constant text nothing but two constants is left, and of any
    // other one no byte is written on its own.
    void setShortText(std::string_view text) noexcept {
        const std::size_t size = text.size();
        if constexpr (std::endian::native == std::endian::little) {
            std::uint64_t words[2] = {0, 0};
            if (size >= 8) {
                words[0] = loaded<std::uint64_t>(text.data());
                if (size > 8) {
                    words[1] = loaded<std::uint64_t>(text.data() + size - 8) >> (8 * (16 - size));
                }
            } else if (size >= 4) {
                words[0] = loaded<std::uint32_t>(text.data()) |
                           std::uint64_t{loaded<std::uint32_t>(text.data() + size - 4)}
                               << (8 * (size - 4));
            } else if (size > 0) {
                const auto byte = [&](std::size_t i) {
                    return std::uint64_t{static_cast<std::uint8_t>(text[i])} << (8 * i);
                };
                words[0] = byte(0) | byte(size / 2) | byte(size - 1);
            }
            words[1] |= ((std::uint64_t{static_cast<unsigned>(Kind::string)} << 4U) | size) << 56U;
            std::memcpy(bytes_, words, sizeof bytes_);
        } else {
            for (std::size_t i = 0; i < size; ++i)
                bytes_[i] = static_cast<std::uint8_t>(text[i]);
            setTag(Kind::string, static_cast<unsigned>(size));
        }
    }
    template <class Word>
    static Word loaded(const char* from) noexcept {
        Word word;
        std::memcpy(&word, from, sizeof word);
        return word;
    }
    void setLongText(std::string_view text);
    static const Value& nil() noexcept;
    const Value& lookUp(std::string_view key) const;
    const Value& lookUpShort(const Value& key) const;  // a key that lies inside its Value
    ArrayBlock& mutableArray();
    DictionaryBlock& mutableDictionary(std::size_t more);  // with room for so many more
    [[noreturn]] void refuse(std::string_view what) const;
    void describe(std::string& out, bool quoteTexts) const;

    alignas(8) std::uint8_t bytes_[16] = {};
};

static_assert(sizeof(Value) == 16);

struct Value::Entry {
    Value key;
    Value value;
};

/// Reading for callers that take a wrong kind as absence: nothing here raises.
inline std::string_view stringOrEmpty(const Value& value) {
    return value.isString() ? value.string() : std::string_view();
}
inline std::int64_t integerOrZero(const Value& value) {
    return value.isString() || value.isNumber() ? value.integerValue() : 0;
}

}  // namespace tavrolin::foundation
