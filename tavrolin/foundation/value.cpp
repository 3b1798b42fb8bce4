#include "tavrolin/foundation/value.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::foundation {

namespace {

template <class T>
T load(const std::uint8_t* bytes) noexcept {
    T result;
    std::memcpy(&result, bytes, sizeof result);
    return result;
}

}  // namespace

// --- Blocks -----------------------------------------------------------------------------------

Value::BytesBlock* Value::BytesBlock::make(const void* bytes, std::size_t size) {
    void* memory = std::malloc(sizeof(BytesBlock) + size);
    if (memory == nullptr) throw std::bad_alloc();
    auto* block = new (memory) BytesBlock;
    block->size = size;
    if (size > 0) std::memcpy(block->text(), bytes, size);
    return block;
}

struct Value::ArrayBlock : Block {
    std::vector<Value> items;
};

// The entries follow the header: one piece of memory for a dictionary.
struct Value::DictionaryBlock : Block {
    std::uint32_t size = 0;
    std::uint32_t capacity = 0;
    // A bit for each key that was ever added: most keys that are absent are known so at once.
    std::uint64_t marks = 0;
    // Above `kIndexFrom` entries: positions + 1 by hash, open addressing, a power of two in size.
    std::vector<std::uint32_t> index;

    static constexpr std::size_t kIndexFrom = 24;

    Entry* first() noexcept { return reinterpret_cast<Entry*>(this + 1); }
    const Entry* first() const noexcept { return reinterpret_cast<const Entry*>(this + 1); }
    std::span<const Entry> entries() const noexcept { return {first(), size}; }

    static DictionaryBlock* make(std::size_t capacity) {
        if (capacity > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
        void* memory = std::malloc(sizeof(DictionaryBlock) + capacity * sizeof(Entry));
        if (memory == nullptr) throw std::bad_alloc();
        auto* block = new (memory) DictionaryBlock;
        block->capacity = static_cast<std::uint32_t>(capacity);
        return block;
    }

    // A copy, or with `own` the block itself, in room for more. The index stays behind.
    static DictionaryBlock* withRoom(DictionaryBlock* block, std::size_t capacity, bool own) {
        DictionaryBlock* larger = make(capacity);
        if (own) {
            std::uninitialized_move_n(block->first(), block->size, larger->first());
        } else {
            std::uninitialized_copy_n(block->first(), block->size, larger->first());
        }
        larger->size = block->size;
        larger->marks = block->marks;
        larger->index = own ? std::move(block->index) : block->index;
        if (own) destroy(block);
        return larger;
    }

    static void destroy(DictionaryBlock* block) noexcept {
        std::destroy_n(block->first(), block->size);
        block->~DictionaryBlock();
        std::free(block);
    }

    static std::uint64_t mark(std::uint64_t head, std::uint64_t tail) noexcept {
        const std::uint64_t mixed = (head ^ tail * 0x9E3779B97F4A7C15U) * 0xD6E8FEB86659FD93U;
        return std::uint64_t{1} << (mixed >> 58U);
    }
    // Of a key that is too long to lie inside its Value.
    static std::uint64_t markOfLong(std::string_view key) noexcept {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(key.data());
        return mark(load<std::uint64_t>(bytes), load<std::uint64_t>(bytes + key.size() - 8));
    }
    static std::uint64_t markOf(const Value& key) noexcept {
        if (key.hasBlock()) return markOfLong(key.string());
        return mark(load<std::uint64_t>(key.bytes_), load<std::uint64_t>(key.bytes_ + 8));
    }

    std::size_t slotOf(std::string_view key) const noexcept {
        const std::size_t mask = index.size() - 1;
        std::size_t slot = std::hash<std::string_view>()(key) & mask;
        while (index[slot] != 0 && first()[index[slot] - 1].key.string() != key) {
            slot = (slot + 1) & mask;
        }
        return slot;
    }

    void rebuildIndex() {
        index.clear();
        if (size <= kIndexFrom) return;
        index.resize(std::bit_ceil(std::size_t{size} * 4));
        for (std::uint32_t i = 0; i < size; ++i)
            index[slotOf(first()[i].key.string())] = i + 1;
    }

    // Null when the key, which is too long to lie inside its Value, is absent.
    Entry* findLong(std::string_view key) noexcept {
        return (marks & markOfLong(key)) == 0 ? nullptr : find(key);
    }
    Entry* find(std::string_view key) noexcept {
        if (!index.empty()) {
            const std::uint32_t position = index[slotOf(key)];
            return position == 0 ? nullptr : first() + (position - 1);
        }
        for (Entry& entry : std::span(first(), size)) {
            if (entry.key.string() == key) return &entry;
        }
        return nullptr;
    }
    // The same for a key that lies inside its Value: such are equal when their 16 bytes are.
    Entry* findShort(const Value& key) noexcept {
        if (!index.empty()) return find(key.string());
        const auto head = load<std::uint64_t>(key.bytes_);
        const auto tail = load<std::uint64_t>(key.bytes_ + 8);
        if ((marks & mark(head, tail)) == 0) return nullptr;
        for (Entry& entry : std::span(first(), size)) {
            if (load<std::uint64_t>(entry.key.bytes_) == head &&
                load<std::uint64_t>(entry.key.bytes_ + 8) == tail) {
                return &entry;
            }
        }
        return nullptr;
    }

    // There must be room.
    void add(Value key, Value value) {
        marks |= markOf(key);
        new (first() + size) Entry{std::move(key), std::move(value)};
        ++size;
        if (index.empty() ? size > kIndexFrom : std::size_t{size} * 2 > index.size()) {
            rebuildIndex();
        } else if (!index.empty()) {
            index[slotOf(first()[size - 1].key.string())] = size;
        }
    }
};

// --- The 16 bytes -----------------------------------------------------------------------------

void Value::setScalar(Kind kind, std::int64_t number) noexcept {
    std::memcpy(bytes_, &number, sizeof number);
    setTag(kind);
}

void Value::setReal(double number) noexcept {
    std::memcpy(bytes_, &number, sizeof number);
    setTag(Kind::real);
}

void Value::setUnsigned(std::uint64_t number) noexcept {
    std::memcpy(bytes_, &number, sizeof number);
    setTag(Kind::integer, static_cast<std::int64_t>(number) < 0 ? kUnsigned : 0);
}

std::int64_t Value::scalar() const noexcept {
    return load<std::int64_t>(bytes_);
}

double Value::realScalar() const noexcept {
    return load<double>(bytes_);
}

void Value::setBlock(Kind kind, Block* block, unsigned low) noexcept {
    std::memcpy(bytes_, &block, sizeof block);
    setTag(kind, low);
}

void Value::destroyBlock() noexcept {
    Block* held = block();
    switch (kind()) {
        case Kind::array:
            delete static_cast<ArrayBlock*>(held);
            break;
        case Kind::dictionary:
            DictionaryBlock::destroy(static_cast<DictionaryBlock*>(held));
            break;
        default:
            std::free(held);
    }
}

void Value::setLongText(std::string_view text) {
    setBlock(Kind::string, BytesBlock::make(text.data(), text.size()), kSharedText);
}

Value::Value(const char* text) {
    if (text != nullptr) *this = Value(std::string_view(text));
}

Value::Value(Date date) noexcept {
    setReal(date.secondsSince1970);
    setTag(Kind::date);
}

Value Value::null() noexcept {
    Value result;
    result.setTag(Kind::null);
    return result;
}

Value Value::data(Bytes bytes) {
    Value result;
    result.setBlock(Kind::data, BytesBlock::make(bytes.data(), bytes.size()));
    return result;
}

Value Value::array(std::initializer_list<Value> items) {
    Value result = arrayWithCapacity(items.size());
    for (const Value& item : items)
        result.append(item);
    return result;
}

Value Value::arrayWithCapacity(std::size_t capacity) {
    auto block = std::make_unique<ArrayBlock>();
    block->items.reserve(capacity);
    Value result;
    result.setBlock(Kind::array, block.release());
    return result;
}

Value Value::dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries) {
    Value result = dictionaryWithCapacity(entries.size());
    for (const auto& [key, value] : entries)
        result.set(key, value);
    return result;
}

Value Value::dictionaryWithCapacity(std::size_t capacity) {
    Value result;
    result.setBlock(Kind::dictionary, DictionaryBlock::make(capacity));
    return result;
}

// --- Asking -----------------------------------------------------------------------------------

bool Value::isNumber() const noexcept {
    return kind() == Kind::boolean || kind() == Kind::integer || kind() == Kind::real;
}

bool Value::isUnsigned() const noexcept {
    return kind() == Kind::integer && (tag() & 15U) == kUnsigned;
}

std::string_view Value::kindName(Kind kind) noexcept {
    static constexpr std::array<std::string_view, 10> kNames = {
        "nil",      "null", "a boolean", "an integer", "a real number",
        "a string", "data", "a date",    "an array",   "a dictionary"};
    return kNames[static_cast<std::size_t>(kind)];
}

void Value::refuse(std::string_view what) const {
    Exception::raise(Exception::kInvalidArgument,
                     std::string(kindName(kind())) + " can't be asked for " + std::string(what));
}

// --- Reading ----------------------------------------------------------------------------------

Value::Bytes Value::bytes() const {
    if (kind() == Kind::data) {
        const std::string_view data = static_cast<const BytesBlock*>(block())->view();
        return {reinterpret_cast<const std::uint8_t*>(data.data()), data.size()};
    }
    if (isNil()) return {};
    refuse("its bytes");
}

Date Value::date() const {
    if (kind() == Kind::date) return {realScalar()};
    if (isNil()) return {};
    refuse("a date");
}

namespace {

std::string_view withoutLeadingBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

// Reads as the platform does: blanks, a sign, digits; beyond the range gives the nearest end.
std::int64_t leadingInteger(std::string_view text) {
    text = withoutLeadingBlanks(text);
    if (text.starts_with('+')) text.remove_prefix(text.size() > 1 && text[1] == '-' ? 0 : 1);
    std::int64_t result = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (code == std::errc::result_out_of_range) {
        return text.starts_with('-') ? std::numeric_limits<std::int64_t>::min()
                                     : std::numeric_limits<std::int64_t>::max();
    }
    return result;
}

double leadingDouble(std::string_view text) {
    text = withoutLeadingBlanks(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    // Words such as "inf" are no numbers here.
    if (text.find_first_of("0123456789.") != 0) return 0;
    double result = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (code == std::errc::result_out_of_range) {  // too large or too close to 0: this one tells
        result = std::strtod(std::string(text.data(), end).c_str(), nullptr);
    }
    return isNegative ? -result : result;
}

std::int64_t truncated(double number) {
    if (std::isnan(number)) return 0;
    if (number >= 9223372036854775808.0) return std::numeric_limits<std::int64_t>::max();
    if (number <= -9223372036854775808.0) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

}  // namespace

std::int64_t Value::integerValue() const {
    switch (kind()) {
        case Kind::nil:
            return 0;
        case Kind::boolean:
        case Kind::integer:
            return scalar();
        case Kind::real:
            return truncated(realScalar());
        case Kind::string:
            return leadingInteger(string());
        default:
            refuse("its integer value");
    }
}

double Value::doubleValue() const {
    switch (kind()) {
        case Kind::nil:
            return 0;
        case Kind::boolean:
            return static_cast<double>(scalar());
        case Kind::integer:
            return isUnsigned() ? static_cast<double>(static_cast<std::uint64_t>(scalar()))
                                : static_cast<double>(scalar());
        case Kind::real:
            return realScalar();
        case Kind::string:
            return leadingDouble(string());
        default:
            refuse("its double value");
    }
}

bool Value::boolValue() const {
    switch (kind()) {
        case Kind::nil:
            return false;
        case Kind::boolean:
        case Kind::integer:
            return scalar() != 0;
        case Kind::real:
            return realScalar() != 0;
        case Kind::string: {
            std::string_view text = withoutLeadingBlanks(string());
            if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
            const std::size_t digit = text.find_first_not_of('0');
            return digit != std::string_view::npos &&
                   std::string_view("YyTt123456789").find(text[digit]) != std::string_view::npos;
        }
        default:
            refuse("its boolean value");
    }
}

std::size_t Value::count() const {
    if (isArray()) return items().size();
    if (isDictionary()) return entries().size();
    if (isNil()) return 0;
    refuse("its count");
}

Value Value::lowercaseString() const {
    return isNil() ? Value() : Value(lowercase(string()));
}

const Value& Value::nil() noexcept {
    static const Value kNil;
    return kNil;
}

const Value& Value::lookUp(std::string_view key) const {
    if (isDictionary()) {
        const Entry* entry = static_cast<DictionaryBlock*>(block())->findLong(key);
        return entry == nullptr ? nil() : entry->value;
    }
    if (isNil()) return nil();
    refuse("the key \"" + std::string(key) + "\"");
}

const Value& Value::lookUpShort(const Value& key) const {
    if (!isDictionary()) return lookUp(key.string());
    const Entry* entry = static_cast<DictionaryBlock*>(block())->findShort(key);
    return entry == nullptr ? nil() : entry->value;
}

const Value& Value::at(std::size_t index) const {
    const std::span<const Value> all = items();
    if (index >= all.size()) {
        Exception::raise(Exception::kRange, "index " + std::to_string(index) +
                                                " is beyond the end of an array of " +
                                                std::to_string(all.size()));
    }
    return all[index];
}

std::span<const Value> Value::items() const {
    if (isArray()) return static_cast<const ArrayBlock*>(block())->items;
    if (isNil()) return {};
    refuse("its elements");
}

std::span<const Value::Entry> Value::entries() const {
    if (isDictionary()) return static_cast<const DictionaryBlock*>(block())->entries();
    if (isNil()) return {};
    refuse("its entries");
}

// --- Changing ---------------------------------------------------------------------------------

Value::ArrayBlock& Value::mutableArray() {
    if (isNil()) *this = arrayWithCapacity(0);
    if (!isArray()) refuse("a new element");
    auto* held = static_cast<ArrayBlock*>(block());
    if (held->shared()) {
        auto own = std::make_unique<ArrayBlock>();
        own->items = held->items;
        release();
        held = own.get();
        setBlock(Kind::array, own.release());
    }
    return *held;
}

Value::DictionaryBlock& Value::mutableDictionary(std::size_t more) {
    if (isNil()) *this = dictionaryWithCapacity(std::max<std::size_t>(more, 4));
    if (!isDictionary()) refuse("a new entry");
    auto* held = static_cast<DictionaryBlock*>(block());
    const bool shared = held->shared();
    const std::size_t needed = held->size + more;
    if (shared || needed > held->capacity) {
        const std::size_t doubled = std::max<std::size_t>(std::size_t{held->size} * 2, 4);
        auto* own = DictionaryBlock::withRoom(
            held, needed > held->capacity ? std::max(needed, doubled) : held->capacity, !shared);
        if (shared) release();
        setBlock(Kind::dictionary, own);
        held = own;
    }
    return *held;
}

void Value::append(Value item) {
    if (item.isNil()) Exception::raise(Exception::kInvalidArgument, "nil can't be put in an array");
    mutableArray().items.push_back(std::move(item));
}

void Value::set(Value key, Value value) {
    if (value.isNil()) {
        Exception::raise(Exception::kInvalidArgument,
                         "nil can't be put in a dictionary (key: " + key.description() + ")");
    }
    if (!key.isString()) {
        Exception::raise(Exception::kInvalidArgument, "a dictionary's key must be a string, not " +
                                                          std::string(kindName(key.kind())));
    }
    auto* dictionary = isDictionary() ? static_cast<DictionaryBlock*>(block()) : nullptr;
    if (dictionary == nullptr || dictionary->shared()) dictionary = &mutableDictionary(0);
    Entry* entry = key.hasBlock() ? dictionary->findLong(key.string()) : dictionary->findShort(key);
    if (entry != nullptr) {
        entry->value = std::move(value);
        return;
    }
    if (dictionary->size == dictionary->capacity) dictionary = &mutableDictionary(1);
    dictionary->add(std::move(key), std::move(value));
}

bool Value::remove(std::string_view key) {
    if ((*this)[key].isNil()) return false;
    DictionaryBlock& dictionary = mutableDictionary(0);
    Entry* last = dictionary.first() + dictionary.size - 1;
    for (Entry* entry = dictionary.find(key); entry < last; ++entry)
        std::swap(entry[0], entry[1]);
    std::destroy_at(last);
    --dictionary.size;
    dictionary.rebuildIndex();
    return true;
}

// --- Comparing and printing -------------------------------------------------------------------

namespace {

bool sameNumber(const Value& a, const Value& b) {
    if (a.kind() == Value::Kind::real || b.kind() == Value::Kind::real) {
        return a.doubleValue() == b.doubleValue();
    }
    return a.isUnsigned() == b.isUnsigned() && a.integerValue() == b.integerValue();
}

bool sameBytes(Value::Bytes a, Value::Bytes b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size()) == 0);
}

}  // namespace

bool operator==(const Value& a, const Value& b) {
    if (a.isNumber() && b.isNumber()) return sameNumber(a, b);
    if (a.kind() != b.kind()) return false;
    switch (a.kind()) {
        case Value::Kind::string:
            return a.string() == b.string();
        case Value::Kind::data:
            return sameBytes(a.bytes(), b.bytes());
        case Value::Kind::date:
            return a.date() == b.date();
        case Value::Kind::array: {
            const auto left = a.items();
            const auto right = b.items();
            return std::equal(left.begin(), left.end(), right.begin(), right.end());
        }
        case Value::Kind::dictionary: {
            if (a.count() != b.count()) return false;
            for (const auto& [key, value] : a.entries()) {
                if (value != b[key.string()]) return false;
            }
            return true;
        }
        default:
            return true;  // nil and null
    }
}

std::string Value::description() const {
    std::string out;
    describe(out, false);
    return out;
}

void Value::describe(std::string& out, bool quoteTexts) const {
    switch (kind()) {
        case Kind::nil:
            out += "(null)";
            break;
        case Kind::null:
            out += "<null>";
            break;
        case Kind::boolean:
            out += scalar() != 0 ? "1" : "0";
            break;
        case Kind::integer:
            out += isUnsigned() ? std::to_string(static_cast<std::uint64_t>(scalar()))
                                : std::to_string(scalar());
            break;
        case Kind::real:
        case Kind::date: {
            std::array<char, 32> text{};
            const auto end =
                std::to_chars(text.data(), text.data() + text.size(), realScalar()).ptr;
            out.append(text.data(), end);
            break;
        }
        case Kind::string:
            if (quoteTexts) out += '"';
            out += string();
            if (quoteTexts) out += '"';
            break;
        case Kind::data:
            out += '<' + std::to_string(bytes().size()) + " bytes>";
            break;
        case Kind::array: {
            out += '[';
            const char* separator = "";
            for (const Value& item : items()) {
                out += separator;
                item.describe(out, true);
                separator = ", ";
            }
            out += ']';
            break;
        }
        case Kind::dictionary: {
            out += '{';
            const char* separator = "";
            for (const auto& [key, value] : entries()) {
                out += separator;
                key.describe(out, true);
                out += ": ";
                value.describe(out, true);
                separator = ", ";
            }
            out += '}';
            break;
        }
    }
}

}  // namespace tavrolin::foundation
