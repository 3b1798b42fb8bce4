#include "tavrolin/foundation/json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "tavrolin/foundation/utf8.h"

namespace tavrolin::foundation {

namespace {

constexpr std::string_view kErrorDomain = "JSON";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Where the first sequence stands that is not UTF-8.
std::size_t firstInvalidByte(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t length = 1;
        while (length <= 4 && !isValidUtf8(text.substr(at, length)))
            ++length;
        if (length > 4) break;
        at += length;
    }
    return at;
}

std::string placed(std::string_view text, std::size_t at, std::string_view what) {
    std::size_t line = 1;
    std::size_t column = 1;
    for (const char c : text.substr(0, at)) {
        if (c == '\n') {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80) {
            ++column;  // characters, not bytes
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " +
           std::string(what);
}

// Whether a number that no double holds is too small rather than too large: the power of ten of its
// first digit that is not 0.
bool isTiny(std::string_view number) {
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, mark);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = std::min(digits.find_first_of("123456789"), digits.size());
    const bool isNegative = mark + 1 < number.size() && number[mark + 1] == '-';
    std::size_t begin = std::min(mark + 1, number.size());
    if (begin < number.size() && !isDigit(number[begin])) ++begin;
    long long exponent = 0;
    const auto code =
        std::from_chars(number.data() + begin, number.data() + number.size(), exponent).ec;
    if (code == std::errc::result_out_of_range) return isNegative;
    const auto power = static_cast<long long>(point) - static_cast<long long>(first);
    // No number of digits that fits in memory outweighs an exponent of 18 digits.
    return (isNegative ? -1 : 1) * std::min(exponent, 1'000'000'000'000'000'000LL) + power < 0;
}

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    Expected<Value> document() {
        Value result;
        if (text_.starts_with("\xEF\xBB\xBF")) at_ = 3;
        if (!isValidUtf8(text_)) {
            at_ = firstInvalidByte(text_);
            fail("not UTF-8");
        } else if (value(result, 0)) {
            skipBlanks();
            if (at_ == text_.size()) return result;
            fail("something after the end of the document");
        }
        return Error{std::string(kErrorDomain), 1, placed(text_, at_, complaint_)};
    }

private:
    bool fail(std::string_view complaint) {
        complaint_ = complaint;
        return false;
    }
    char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    bool take(char c) {
        if (at_ == text_.size() || text_[at_] != c) return false;
        ++at_;
        return true;
    }
    void skipBlanks() { at_ = std::min(text_.find_first_not_of(" \t\n\r", at_), text_.size()); }
    bool expected(std::string_view what) {
        complaint_ = std::string(what) + " expected, " +
                     (at_ == text_.size() ? "but the text ends" : "not this");
        return false;
    }

    bool value(Value& out, int depth) {
        skipBlanks();
        switch (peek()) {
            case '{':
                return collection(out, depth, &Parser::dictionaryItems);
            case '[':
                return collection(out, depth, &Parser::arrayItems);
            case '"': {
                std::string text;
                if (!string(text)) return false;
                out = Value(text);
                return true;
            }
            case 't':
                return word("true", out, true);
            case 'f':
                return word("false", out, false);
            case 'n':
                return word("null", out, Value::null());
            default:
                return number(out);
        }
    }

    bool word(std::string_view name, Value& out, Value meaning) {
        if (!text_.substr(at_).starts_with(name)) return expected("a value");
        at_ += name.size();
        out = std::move(meaning);
        return true;
    }

    bool collection(Value& out, int depth, bool (Parser::*items)(Value&, int)) {
        if (depth == kJSONDepth) {
            return fail("deeper than " + std::to_string(depth) + " levels");
        }
        ++at_;
        return (this->*items)(out, depth + 1);
    }

    bool arrayItems(Value& out, int depth) {
        out = Value::array();
        skipBlanks();
        if (take(']')) return true;
        do {
            Value item;
            if (!value(item, depth)) return false;
            out.append(std::move(item));
            skipBlanks();
        } while (take(','));
        return take(']') || expected("a comma or ]");
    }

    bool dictionaryItems(Value& out, int depth) {
        out = Value::dictionary();
        skipBlanks();
        if (take('}')) return true;
        do {
            skipBlanks();
            std::string key;
            if (peek() != '"') return expected("a key in quotes");
            if (!string(key)) return false;
            skipBlanks();
            if (!take(':')) return expected("a colon");
            Value item;
            if (!value(item, depth)) return false;
            out.set(Value(key), std::move(item));
            skipBlanks();
        } while (take(','));
        return take('}') || expected("a comma or }");
    }

    bool string(std::string& out) {
        ++at_;
        for (;;) {
            const std::size_t begin = at_;
            while (at_ < text_.size() && static_cast<unsigned char>(text_[at_]) >= 0x20 &&
                   text_[at_] != '"' && text_[at_] != '\\')
                ++at_;
            out.append(text_.substr(begin, at_ - begin));
            if (at_ == text_.size()) return expected("a closing quote");
            if (take('"')) return true;
            if (text_[at_] != '\\') return fail("a control character in a text");
            if (!escape(out)) return false;
        }
    }

    bool escape(std::string& out) {
        static constexpr std::string_view kLetters = "\"\\/bfnrt";
        static constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
        const std::size_t begin = at_++;
        if (take('u')) {
            std::uint32_t unit = 0;
            std::uint32_t low = 0;
            if (!hex(unit)) return false;
            if (unit >= 0xD800 && unit < 0xDC00 && text_.substr(at_).starts_with("\\u")) {
                at_ += 2;
                if (!hex(low)) return false;
                if (low >= 0xDC00 && low < 0xE000) {
                    unit = 0x10000 + ((unit - 0xD800) << 10U) + (low - 0xDC00);
                }
            }
            if (unit >= 0xD800 && unit < 0xE000) {
                at_ = begin;
                return fail("half a surrogate pair");
            }
            appendUtf8(out, unit);
            return true;
        }
        const std::size_t letter = at_ < text_.size() ? kLetters.find(text_[at_]) : kLetters.npos;
        if (letter == kLetters.npos) return expected("an escape");
        ++at_;
        out += kMeanings[letter];
        return true;
    }

    bool hex(std::uint32_t& unit) {
        const std::string_view digits = text_.substr(at_, 4);
        const auto [end, code] =
            std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
        if (code != std::errc() || end != digits.data() + 4) return expected("four hex digits");
        at_ += 4;
        return true;
    }

    static void appendUtf8(std::string& out, std::uint32_t c) {
        const auto byte = [&out](std::uint32_t b) { out += static_cast<char>(b); };
        const auto tail = [&](std::uint32_t shift) { byte(0x80U | ((c >> shift) & 0x3FU)); };
        if (c < 0x80) {
            byte(c);
        } else if (c < 0x800) {
            byte(0xC0U | (c >> 6U));
            tail(0);
        } else if (c < 0x10000) {
            byte(0xE0U | (c >> 12U));
            tail(6);
            tail(0);
        } else {
            byte(0xF0U | (c >> 18U));
            tail(12);
            tail(6);
            tail(0);
        }
    }

    bool digits() {
        const std::size_t begin = at_;
        while (isDigit(peek()))
            ++at_;
        return at_ > begin || expected("a digit");
    }

    bool number(Value& out) {
        const std::size_t begin = at_;
        const bool isSigned = take('-');
        if (!isSigned && !isDigit(peek())) return expected("a value");
        if (!take('0') && !digits()) return false;
        const std::size_t whole = at_;
        if (take('.') && !digits()) return false;
        if (take('e') || take('E')) {
            if (!take('+')) take('-');
            if (!digits()) return false;
        }
        const std::string_view text = text_.substr(begin, at_ - begin);
        const char* const end = text.data() + text.size();
        if (at_ == whole) {
            std::int64_t integer = 0;
            if (std::from_chars(text.data(), end, integer).ec == std::errc()) {
                out = integer;
                return true;
            }
            std::uint64_t large = 0;
            if (!isSigned && std::from_chars(text.data(), end, large).ec == std::errc()) {
                out = large;
                return true;
            }
        }
        double real = 0;
        if (std::from_chars(text.data(), end, real).ec != std::errc()) {
            if (!isTiny(text.substr(isSigned ? 1 : 0))) {
                at_ = begin;
                return fail("a number beyond every range");
            }
            real = isSigned ? -0.0 : 0.0;
        }
        out = real;
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::string complaint_;
};

bool isEscaped(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

// Where the next character stands, from there on, that JSON escapes; the text's size when there is
// none. Few texts have any, so eight bytes are looked at in one go.
std::size_t nextToEscape(std::string_view text, std::size_t at) {
    constexpr std::uint64_t kOnes = 0x0101010101010101U;
    const auto hasByteBelow = [](std::uint64_t word, std::uint64_t limit) {
        return ((word - kOnes * limit) & ~word & (kOnes * 0x80)) != 0;
    };
    for (std::uint64_t word = 0; text.size() - at >= sizeof word; at += sizeof word) {
        std::memcpy(&word, text.data() + at, sizeof word);
        if (hasByteBelow(word, 0x20) || hasByteBelow(word ^ (kOnes * '"'), 1) ||
            hasByteBelow(word ^ (kOnes * '\\'), 1)) {
            break;
        }
    }
    while (at < text.size() && !isEscaped(text[at]))
        ++at;
    return at;
}

class Writer {
public:
    explicit Writer(bool isPretty) : isPretty_(isPretty) {}

    Expected<std::string> document(const Value& value) {
        if (write(value, 0)) return std::move(out_);
        return Error{std::string(kErrorDomain), 2, "JSON has no form for " + complaint_};
    }

private:
    bool write(const Value& value, int depth) {
        switch (value.kind()) {
            case Value::Kind::null:
                out_ += "null";
                return true;
            case Value::Kind::boolean:
                out_ += value.boolValue() ? "true" : "false";
                return true;
            case Value::Kind::integer:
                out_ +=
                    value.isUnsigned() ? value.description() : std::to_string(value.integerValue());
                return true;
            case Value::Kind::real:
                return real(value.doubleValue());
            case Value::Kind::string:
                return text(value.string());
            case Value::Kind::array:
                return items(value.items(), '[', ']', depth,
                             [&](const Value& item) { return write(item, depth + 1); });
            case Value::Kind::dictionary:
                return items(value.entries(), '{', '}', depth, [&](const Value::Entry& entry) {
                    if (!text(entry.key.string())) return false;
                    out_ += isPretty_ ? ": " : ":";
                    return write(entry.value, depth + 1);
                });
            default:
                complaint_ = Value::kindName(value.kind());
                return false;
        }
    }

    template <class Items, class Item>
    bool items(const Items& all, char open, char close, int depth, const Item& item) {
        if (depth == kJSONDepth) {
            complaint_ = "more than " + std::to_string(depth) + " levels";
            return false;
        }
        out_ += open;
        bool isFirst = true;
        for (const auto& each : all) {
            if (!isFirst) out_ += ',';
            isFirst = false;
            newLine(depth + 1);
            if (!item(each)) return false;
        }
        if (!isFirst) newLine(depth);
        out_ += close;
        return true;
    }

    void newLine(int depth) {
        if (isPretty_) out_.append("\n").append(2 * static_cast<std::size_t>(depth), ' ');
    }

    bool real(double number) {
        if (!std::isfinite(number)) {
            complaint_ = "a number that is not finite";
            return false;
        }
        std::array<char, 32> digits{};
        const char* const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        const std::string_view written(digits.data(), end);
        out_ += written;
        // So that it is read back as a real number.
        if (written.find_first_of(".e") == std::string_view::npos) out_ += ".0";
        return true;
    }

    bool text(std::string_view text) {
        if (!isValidUtf8(text)) {
            complaint_ = "a text that is not UTF-8";
            return false;
        }
        out_ += '"';
        std::size_t written = 0;
        for (std::size_t i = nextToEscape(text, 0); i < text.size();
             i = nextToEscape(text, i + 1)) {
            out_.append(text.substr(written, i - written));
            written = i + 1;
            escape(text[i]);
        }
        out_.append(text.substr(written)).append("\"");
        return true;
    }

    void escape(char c) {
        static constexpr std::string_view kCharacters = "\"\\\b\f\n\r\t";
        static constexpr std::string_view kLetters = "\"\\bfnrt";
        static constexpr std::string_view kHex = "0123456789abcdef";
        out_ += '\\';
        const std::size_t found = kCharacters.find(c);
        if (found != std::string_view::npos) {
            out_ += kLetters[found];
        } else {
            const auto code = static_cast<unsigned char>(c);
            out_.append("u00").append(1, kHex[code >> 4U]).append(1, kHex[code & 15U]);
        }
    }

    bool isPretty_;
    std::string out_;
    std::string complaint_;
};

}  // namespace

Expected<Value> valueWithJSON(std::string_view text) {
    return Parser(text).document();
}

Expected<std::string> jsonWithValue(const Value& value, JSONStyle style) {
    return Writer(style == JSONStyle::pretty).document(value);
}

}  // namespace tavrolin::foundation
