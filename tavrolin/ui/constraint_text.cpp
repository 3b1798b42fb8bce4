#include "tavrolin/ui/constraint_text.h"

#include <charconv>
#include <cmath>
#include <string>
#include <utility>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::ui {

namespace {

constexpr std::pair<std::string_view, LayoutAttribute> kAttributes[] = {
    {"left", LayoutAttribute::left},       {"right", LayoutAttribute::right},
    {"leading", LayoutAttribute::leading}, {"trailing", LayoutAttribute::trailing},
    {"top", LayoutAttribute::top},         {"bottom", LayoutAttribute::bottom},
    {"width", LayoutAttribute::width},     {"height", LayoutAttribute::height},
    {"centerX", LayoutAttribute::centerX}, {"centerY", LayoutAttribute::centerY},
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    ConstraintText constraint() {
        item(result_.firstItem, result_.firstAttribute);
        result_.relation = relation();
        term(accept('-') ? -1 : 1);
        while (true) {
            if (accept('+')) {
                term(1);
            } else if (accept('-')) {
                term(-1);
            } else {
                break;
            }
        }
        if (accept('@')) {
            result_.priority = number();
            if (!(result_.priority > 0) || result_.priority > priority::required) {
                fail("a priority above 0 and at most 1000");
            }
        }
        skipBlanks();
        if (at_ != text_.size()) fail("the end");
        return result_;
    }

private:
    [[noreturn]] void fail(std::string_view expected) const {
        foundation::Exception::raise(
            foundation::Exception::kInvalidArgument,
            "column " + std::to_string(at_ + 1) + ": " + std::string(expected) + " expected");
    }

    void skipBlanks() {
        while (at_ < text_.size() && text_[at_] == ' ')
            ++at_;
    }

    char next() {
        skipBlanks();
        return at_ < text_.size() ? text_[at_] : '\0';
    }

    bool accept(char c) {
        if (next() != c) return false;
        ++at_;
        return true;
    }

    std::string_view name(std::string_view expected) {
        if (!isLetter(next())) fail(expected);
        const std::size_t begin = at_;
        while (at_ < text_.size() && (isLetter(text_[at_]) || isDigit(text_[at_])))
            ++at_;
        return text_.substr(begin, at_ - begin);
    }

    void item(std::string_view& view, LayoutAttribute& attribute) {
        view = name("an item");
        if (at_ >= text_.size() || text_[at_] != '.') fail("a dot");
        ++at_;
        const std::size_t begin = at_;
        const std::string_view found = name("an attribute");
        for (const auto& [spelt, known] : kAttributes) {
            if (spelt != found) continue;
            attribute = known;
            return;
        }
        at_ = begin;
        fail("an attribute");
    }

    LayoutRelation relation() {
        if (accept('=')) return LayoutRelation::equal;
        const char c = next();
        if ((c == '<' || c == '>') && text_.substr(at_, 2).ends_with('=')) {
            at_ += 2;
            return c == '<' ? LayoutRelation::lessThanOrEqual : LayoutRelation::greaterThanOrEqual;
        }
        fail("=, <= or >=");
    }

    double number() {
        if (!isDigit(next())) fail("a number");
        double value = 0;
        const auto [end, error] =
            std::from_chars(text_.data() + at_, text_.data() + text_.size(), value);
        if (error != std::errc() || !std::isfinite(value)) fail("a number");
        at_ = static_cast<std::size_t>(end - text_.data());
        return value;
    }

    // A sum or a product may be more than a number holds.
    double finite(double value) const {
        if (!std::isfinite(value)) fail("numbers within range");
        return value;
    }

    // A number, an item, or one times the other.
    void term(double sign) {
        double factor = sign;
        if (isDigit(next())) {
            factor *= number();
            if (!accept('*')) {
                result_.constant = finite(result_.constant + factor);
                return;
            }
        }
        if (!result_.secondItem.empty()) fail("a number");
        item(result_.secondItem, result_.secondAttribute);
        if (accept('*')) {
            factor *= number();
        } else if (accept('/')) {
            const std::size_t begin = at_;
            const double divisor = number();
            if (divisor == 0) {
                at_ = begin;
                fail("a number other than 0");
            }
            factor /= divisor;
        }
        result_.multiplier = finite(factor);
    }

    std::string_view text_;
    std::size_t at_ = 0;
    ConstraintText result_;
};

}  // namespace

ConstraintText ConstraintText::parse(std::string_view text) {
    return Parser(text).constraint();
}

}  // namespace tavrolin::ui
