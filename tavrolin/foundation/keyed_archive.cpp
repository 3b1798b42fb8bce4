#include "tavrolin/foundation/keyed_archive.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::foundation {

namespace {

// RFC 8949: an item's first byte is its major type in three bits and, in five, its argument or
// which bytes hold that.
constexpr unsigned kUnsignedMajor = 0;
constexpr unsigned kNegativeMajor = 1;
constexpr unsigned kBytesMajor = 2;
constexpr unsigned kTextMajor = 3;
constexpr unsigned kArrayMajor = 4;
constexpr unsigned kMapMajor = 5;
constexpr unsigned kTagMajor = 6;
constexpr unsigned kSimpleMajor = 7;

constexpr std::uint8_t kFalse = 0xF4;
constexpr std::uint8_t kTrue = 0xF5;
constexpr std::uint8_t kNull = 0xF6;
constexpr std::uint8_t kHalf = 0xF9;
constexpr std::uint8_t kSingle = 0xFA;
constexpr std::uint8_t kDouble = 0xFB;

constexpr std::uint64_t kDateTag = 1;
constexpr std::uint64_t kObjectTag = 27;  // [class name, fields]
constexpr std::uint8_t kPair = 0x82;      // an array of two

constexpr int kDeepest = 1024;  // well above what is read from JSON

[[noreturn]] void refuse(std::string reason) {
    Exception::raise(Exception::kInvalidArchive, std::move(reason));
}

template <class Unsigned>
void store(std::uint8_t* to, Unsigned number) {
    if constexpr (std::endian::native == std::endian::little) {
        for (std::size_t i = 0; i < sizeof number; ++i) {
            to[i] = static_cast<std::uint8_t>(number >> (8 * (sizeof number - 1 - i)));
        }
    } else {
        std::memcpy(to, &number, sizeof number);
    }
}

template <class Unsigned>
Unsigned fetch(const std::uint8_t* from) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
        number = (number << 8U) | from[i];
    return static_cast<Unsigned>(number);
}

// Writes the first bytes of an item at `to`, which has room for nine; gives how many.
std::size_t putHead(std::uint8_t* to, unsigned major, std::uint64_t argument) {
    const auto first = static_cast<std::uint8_t>(major << 5U);
    if (argument < 24) {
        *to = static_cast<std::uint8_t>(first | argument);
        return 1;
    }
    if (argument <= 0xFF) {
        to[0] = first | 24U;
        to[1] = static_cast<std::uint8_t>(argument);
        return 2;
    }
    if (argument <= 0xFFFF) {
        to[0] = first | 25U;
        store(to + 1, static_cast<std::uint16_t>(argument));
        return 3;
    }
    if (argument <= 0xFFFFFFFF) {
        to[0] = first | 26U;
        store(to + 1, static_cast<std::uint32_t>(argument));
        return 5;
    }
    to[0] = first | 27U;
    store(to + 1, argument);
    return 9;
}

}  // namespace

// --- Writing ----------------------------------------------------------------------------------

std::vector<std::uint8_t> KeyedArchiver::archivedData(const Archivable& root,
                                                      bool requiringSecureCoding) {
    KeyedArchiver archiver(requiringSecureCoding);
    archiver.writeRecord(root);
    return archiver.finish();
}

std::vector<std::uint8_t> KeyedArchiver::archivedData(const Value& root) {
    if (root.isNil()) Exception::raise(Exception::kInvalidArgument, "nil can't be archived");
    KeyedArchiver archiver(false);
    archiver.writeValue(root);
    return archiver.finish();
}

void KeyedArchiver::encode(std::string_view key, const Value& value) {
    if (value.isNil()) return;
    ++fields_;
    writeText(key);
    writeValue(value);
}

void KeyedArchiver::encode(std::string_view key, const Archivable* record) {
    if (record == nullptr) return;
    ++fields_;
    writeText(key);
    writeRecord(*record);
}

void KeyedArchiver::beginArray(std::string_view key, std::size_t count) {
    ++fields_;
    writeText(key);
    writeHead(kArrayMajor, count);
    enter();
}

void KeyedArchiver::endArray() {
    --depth_;
}

// A missing element keeps its place as null.
void KeyedArchiver::element(const Archivable* record) {
    if (record == nullptr) {
        writeByte(kNull);
    } else {
        writeRecord(*record);
    }
}

void KeyedArchiver::writeRecord(const Archivable& record) {
    if (secure_ && !record.supportsSecureCoding()) {
        refuse(std::string(record.className()) + " does not support secure coding");
    }
    enter();
    writeHead(kTagMajor, kObjectTag);
    writeByte(kPair);
    writeText(record.className());

    // How many fields come is known only behind them: the head is put in place then, and seldom
    // takes more than the one byte that is kept free for it.
    const std::uint64_t fieldsOutside = fields_;
    fields_ = 0;
    const std::size_t place = size_;
    writeByte(0);
    record.encodeWithCoder(*this);
    std::array<std::uint8_t, 9> head{};
    const std::size_t length = putHead(head.data(), kMapMajor, fields_);
    if (length > 1) {
        room(length);
        std::memmove(bytes_.data() + place + length, bytes_.data() + place + 1, size_ - place - 1);
        size_ += length - 1;
    }
    std::memcpy(bytes_.data() + place, head.data(), length);
    fields_ = fieldsOutside;
    --depth_;
}

void KeyedArchiver::writeValue(const Value& value) {
    switch (value.kind()) {
        case Value::Kind::nil:
        case Value::Kind::null:
            writeByte(kNull);
            break;
        case Value::Kind::boolean:
            writeByte(value.boolValue() ? kTrue : kFalse);
            break;
        case Value::Kind::integer: {
            const std::int64_t number = value.integerValue();
            if (number < 0 && !value.isUnsigned()) {
                writeHead(kNegativeMajor, ~static_cast<std::uint64_t>(number));
            } else {
                writeHead(kUnsignedMajor, static_cast<std::uint64_t>(number));
            }
            break;
        }
        case Value::Kind::real:
            writeFloat(value.doubleValue());
            break;
        case Value::Kind::string:
            writeText(value.string());
            break;
        case Value::Kind::data: {
            const Value::Bytes bytes = value.bytes();
            writeHead(kBytesMajor, bytes.size());
            if (!bytes.empty()) std::memcpy(room(bytes.size()), bytes.data(), bytes.size());
            size_ += bytes.size();
            break;
        }
        case Value::Kind::date:
            writeHead(kTagMajor, kDateTag);
            writeFloat(value.date().secondsSince1970);
            break;
        case Value::Kind::array:
            enter();
            writeHead(kArrayMajor, value.count());
            for (const Value& item : value.items())
                writeValue(item);
            --depth_;
            break;
        case Value::Kind::dictionary:
            enter();
            writeHead(kMapMajor, value.count());
            for (const auto& [key, item] : value.entries()) {
                writeText(key.string());
                writeValue(item);
            }
            --depth_;
            break;
    }
}

void KeyedArchiver::writeText(std::string_view text) {
    if (!isValidUtf8(text)) {
        writeText(repairedUtf8(text));
        return;
    }
    std::uint8_t* to = room(9 + text.size());
    to += putHead(to, kTextMajor, text.size());
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    size_ = static_cast<std::size_t>(to - bytes_.data()) + text.size();
}

// In the shortest of the three widths that keeps the number.
void KeyedArchiver::writeFloat(double number) {
    std::uint8_t* to = room(9);
    const auto single = static_cast<float>(number);
    if (static_cast<double>(single) != number) {  // also what is no number
        to[0] = kDouble;
        store(to + 1, std::bit_cast<std::uint64_t>(number));
        size_ += 9;
        return;
    }
    const auto bits = std::bit_cast<std::uint32_t>(single);
    const std::uint32_t exponent = (bits >> 23U) & 0xFFU;
    const bool fitsHalf = (bits & 0x1FFFU) == 0 && exponent >= 113 && exponent <= 142;
    if (fitsHalf || number == 0) {
        std::uint32_t half = (bits >> 16U) & 0x8000U;
        if (number != 0) half |= (exponent - 112) << 10U | (bits >> 13U & 0x3FFU);
        to[0] = kHalf;
        store(to + 1, static_cast<std::uint16_t>(half));
        size_ += 3;
    } else {
        to[0] = kSingle;
        store(to + 1, bits);
        size_ += 5;
    }
}

void KeyedArchiver::writeHead(unsigned major, std::uint64_t argument) {
    size_ += putHead(room(9), major, argument);
}

void KeyedArchiver::writeByte(std::uint8_t byte) {
    *room(1) = byte;
    ++size_;
}

void KeyedArchiver::enter() {
    if (++depth_ > kDeepest) {
        refuse("what is to be archived goes deeper than " + std::to_string(kDeepest) + " levels");
    }
}

void KeyedArchiver::grow(std::size_t size) {
    static constexpr std::size_t kFirstRoom = 4096;
    bytes_.resize(std::max({kFirstRoom, bytes_.size() * 2, size_ + size}));
}

std::vector<std::uint8_t> KeyedArchiver::finish() {
    bytes_.resize(size_);
    return std::move(bytes_);
}

// --- Checking ---------------------------------------------------------------------------------

namespace {

// Walks once over all the bytes before anything is read. Whoever reads afterwards relies on it:
// every item is whole and of a kind that an archive has, and every text is UTF-8.
class Check {
public:
    explicit Check(Value::Bytes bytes) : at_(bytes.data()), end_(bytes.data() + bytes.size()) {}

    void wholeArchive() {
        item(0);
        if (at_ != end_) refuse(std::to_string(left()) + " bytes trail behind the archive");
    }

private:
    struct Head {
        unsigned major;
        unsigned info;
        std::uint64_t argument;
    };

    std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }

    Head head() {
        if (at_ == end_) refuse("the archive is cut short");
        const unsigned first = *at_++;
        Head result{first >> 5U, first & 31U, first & 31U};
        if (result.info < 24) return result;
        if (result.info == 31) refuse("the archive holds an item of indefinite length");
        if (result.info > 27) refuse("the archive holds a byte that begins no item");
        const std::size_t length = std::size_t{1} << (result.info - 24);
        if (left() < length) refuse("the archive is cut short");
        result.argument = 0;
        for (std::size_t i = 0; i < length; ++i)
            result.argument = (result.argument << 8U) | *at_++;
        return result;
    }

    void item(int depth) {
        const Head it = head();
        switch (it.major) {
            case kUnsignedMajor:
                break;
            case kNegativeMajor:
                if (it.argument > std::numeric_limits<std::int64_t>::max()) {
                    refuse("the archive holds a negative number beyond 64 bits");
                }
                break;
            case kBytesMajor:
                bytes(it.argument);
                break;
            case kTextMajor:
                textOf(it.argument);
                break;
            case kArrayMajor:
                array(it.argument, deeper(depth));
                break;
            case kMapMajor:
                map(it.argument, deeper(depth));
                break;
            case kTagMajor:
                tagged(it.argument, depth);
                break;
            default:
                simple(it.info);
        }
    }

    static int deeper(int depth) {
        if (depth == kDeepest) {
            refuse("the archive goes deeper than " + std::to_string(kDeepest) + " levels");
        }
        return depth + 1;
    }

    void promise(std::uint64_t count, std::size_t bytesEach) const {
        if (count > left() / bytesEach) {
            refuse("the archive promises " + std::to_string(count) + " items, but only " +
                   std::to_string(left()) + " bytes are left");
        }
    }

    std::string_view bytes(std::uint64_t count) {
        if (count > left()) {
            refuse("the archive promises " + std::to_string(count) + " bytes, but only " +
                   std::to_string(left()) + " are left");
        }
        const std::string_view result(reinterpret_cast<const char*>(at_),
                                      static_cast<std::size_t>(count));
        at_ += count;
        return result;
    }

    void textOf(std::uint64_t length) {
        if (!isValidUtf8(bytes(length))) refuse("the archive holds a text that is not UTF-8");
    }

    void text(const char* otherwise) {
        const Head it = head();
        if (it.major != kTextMajor) refuse(otherwise);
        textOf(it.argument);
    }

    void array(std::uint64_t count, int depth) {
        promise(count, 1);
        for (std::uint64_t i = 0; i < count; ++i)
            item(depth);
    }

    void map(std::uint64_t count, int depth) {
        promise(count, 2);
        for (std::uint64_t i = 0; i < count; ++i) {
            text("the archive holds a key that is no text");
            item(depth);
        }
    }

    void tagged(std::uint64_t tag, int depth) {
        if (tag == kObjectTag) {
            const Head pair = head();
            if (pair.major != kArrayMajor || pair.argument != 2) refuse(kNoRecord);
            text(kNoRecord);
            const Head fields = head();
            if (fields.major != kMapMajor) refuse(kNoRecord);
            map(fields.argument, deeper(depth));
        } else if (tag == kDateTag) {
            const Head seconds = head();
            if (seconds.major != kSimpleMajor || seconds.info < 25) {
                refuse("the archive holds a date that is no number of seconds");
            }
        } else {
            refuse("the archive holds the unknown tag " + std::to_string(tag));
        }
    }

    static void simple(unsigned info) {
        if (info < 20 || info > 27 || info == 23 || info == 24) {
            refuse("the archive holds the unknown simple value " + std::to_string(info));
        }
    }

    static constexpr const char* kNoRecord = "the archive holds a record without name and fields";

    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

// --- Reading what has been checked ------------------------------------------------------------

struct Head {
    unsigned major;
    std::uint64_t argument;
};

Head readHead(const std::uint8_t*& at) {
    const unsigned first = *at++;
    Head result{first >> 5U, first & 31U};
    switch (result.argument) {
        case 24:
            result.argument = *at;
            at += 1;
            break;
        case 25:
            result.argument = fetch<std::uint16_t>(at);
            at += 2;
            break;
        case 26:
            result.argument = fetch<std::uint32_t>(at);
            at += 4;
            break;
        case 27:
            result.argument = fetch<std::uint64_t>(at);
            at += 8;
            break;
        default:
            break;
    }
    return result;
}

std::string_view readText(const std::uint8_t*& at) {
    const auto length = static_cast<std::size_t>(readHead(at).argument);
    const std::string_view text(reinterpret_cast<const char*>(at), length);
    at += length;
    return text;
}

double halfToDouble(std::uint16_t half) {
    const int exponent = (half >> 10U) & 31;
    const int fraction = half & 0x3FF;
    double number = 0;
    if (exponent == 0) {
        number = std::ldexp(fraction, -24);
    } else if (exponent == 31) {
        number = fraction == 0 ? std::numeric_limits<double>::infinity()
                               : std::numeric_limits<double>::quiet_NaN();
    } else {
        number = std::ldexp(fraction + 0x400, exponent - 25);
    }
    return (half & 0x8000U) != 0 ? -number : number;
}

double readFloat(const std::uint8_t*& at) {
    const std::uint8_t width = *at++;
    switch (width) {
        case kHalf:
            at += 2;
            return halfToDouble(fetch<std::uint16_t>(at - 2));
        case kSingle:
            at += 4;
            return std::bit_cast<float>(fetch<std::uint32_t>(at - 4));
        default:
            at += 8;
            return std::bit_cast<double>(fetch<std::uint64_t>(at - 8));
    }
}

Value readSimple(const std::uint8_t*& at) {
    switch (*at) {
        case kFalse:
        case kTrue:
            return *at++ == kTrue;
        case kNull:
            ++at;
            return Value::null();
        default:
            return readFloat(at);
    }
}

// Checked bytes go no deeper than `kDeepest`, so recursion is safe. Of a key that comes twice the
// last value counts.
Value readValue(const std::uint8_t*& at) {
    const std::uint8_t* const begin = at;
    const Head it = readHead(at);
    switch (it.major) {
        case kUnsignedMajor:
            return it.argument;
        case kNegativeMajor:
            return static_cast<std::int64_t>(~it.argument);
        case kBytesMajor:
            at += it.argument;
            return Value::data({at - it.argument, static_cast<std::size_t>(it.argument)});
        case kTextMajor:
            at += it.argument;
            return std::string_view(reinterpret_cast<const char*>(at - it.argument),
                                    static_cast<std::size_t>(it.argument));
        case kArrayMajor: {
            Value array = Value::arrayWithCapacity(static_cast<std::size_t>(it.argument));
            for (std::uint64_t i = 0; i < it.argument; ++i)
                array.append(readValue(at));
            return array;
        }
        case kMapMajor: {
            Value dictionary = Value::dictionaryWithCapacity(static_cast<std::size_t>(it.argument));
            for (std::uint64_t i = 0; i < it.argument; ++i) {
                const std::string_view key = readText(at);
                dictionary.set(key, readValue(at));
            }
            return dictionary;
        }
        case kTagMajor:
            if (it.argument != kDateTag) refuse("a record stands where a plain value is expected");
            return Date{readFloat(at)};
        default:
            at = begin;
            return readSimple(at);
    }
}

bool isDeclared(const Value& value, Declared declared) {
    switch (declared) {
        case Declared::string:
            return value.isString();
        case Declared::number:
            return value.isNumber();
        case Declared::dictionary:
            return value.isDictionary();
        case Declared::array:
            return value.isArray();
        case Declared::data:
            return value.kind() == Value::Kind::data;
        case Declared::date:
            return value.kind() == Value::Kind::date;
        case Declared::any:
            break;
    }
    return true;
}

}  // namespace

KeyedUnarchiver::KeyedUnarchiver(Value::Bytes bytes, Mode mode) : root_(bytes.data()), mode_(mode) {
    Check(bytes).wholeArchive();
}

bool KeyedUnarchiver::rootIs(std::string_view className) {
    const std::uint8_t* map = mapOf(root_, className);
    if (map == nullptr) return false;
    enterMap(map);
    return true;
}

Value KeyedUnarchiver::unarchiveValue(Value::Bytes bytes) {
    Check(bytes).wholeArchive();
    const std::uint8_t* at = bytes.data();
    return readValue(at);
}

Value KeyedUnarchiver::decode(std::string_view key, Declared declared) {
    Field* field = find(key);
    if (field == nullptr) return {};
    const std::uint8_t* at = field->value;
    Value value = readValue(at);
    field->end = at;
    if (mode_ == Mode::strict && !isDeclared(value, declared)) {
        refuse("the archive holds " + std::string(Value::kindName(value.kind())) + " at \"" +
               std::string(key) + "\", which is not what is declared");
    }
    return value;
}

void KeyedUnarchiver::enterMap(const std::uint8_t* map) {
    count_ = static_cast<std::size_t>(readHead(map).argument);
    first_ = map;
    fields_ = few_;
    if (count_ > kFew) {
        many_ = std::make_unique_for_overwrite<Field[]>(count_);
        fields_ = many_.get();
    }
}

KeyedUnarchiver::Field* KeyedUnarchiver::find(std::string_view key) {
    // The field after the last one, as a rule: it is looked at before those that are known.
    if (next_ == known_ && known_ < count_) takeNext();
    if (next_ < known_ && fields_[next_].is(key)) return &fields_[next_++];
    for (std::size_t i = 0; i < known_ || known_ < count_; ++i) {
        if (i == known_) takeNext();
        if (fields_[i].is(key)) {
            next_ = i + 1;
            return &fields_[i];
        }
    }
    return nullptr;
}

void KeyedUnarchiver::takeNext() {
    const std::uint8_t* at = known_ == 0 ? first_ : endOf(fields_[known_ - 1]);
    const std::string_view key = readText(at);
    fields_[known_++] = {key.data(), key.size(), at, nullptr};
}

const std::uint8_t* KeyedUnarchiver::endOf(Field& field) {
    if (field.end == nullptr) field.end = past(field.value);
    return field.end;
}

const std::uint8_t* KeyedUnarchiver::finish() {
    while (known_ < count_)
        takeNext();
    return count_ == 0 ? first_ : endOf(fields_[count_ - 1]);
}

std::size_t KeyedUnarchiver::enterArray(const std::uint8_t*& at) {
    const std::uint8_t* inside = at;
    const Head array = readHead(inside);
    if (array.major != kArrayMajor) return 0;
    at = inside;
    return static_cast<std::size_t>(array.argument);
}

const std::uint8_t* KeyedUnarchiver::past(const std::uint8_t* at) {
    for (std::uint64_t left = 1; left > 0; --left) {
        const Head it = readHead(at);
        switch (it.major) {
            case kBytesMajor:
            case kTextMajor:
                at += it.argument;
                break;
            case kArrayMajor:
                left += it.argument;
                break;
            case kMapMajor:
                left += 2 * it.argument;
                break;
            case kTagMajor:
                ++left;
                break;
            default:
                break;  // a number or a simple value lies in its head
        }
    }
    return at;
}

const std::uint8_t* KeyedUnarchiver::mapOf(const std::uint8_t* at, std::string_view className) {
    const Head tag = readHead(at);
    if (tag.major != kTagMajor || tag.argument != kObjectTag) return nullptr;
    readHead(at);  // the pair
    return readText(at) == className ? at : nullptr;
}

}  // namespace tavrolin::foundation
