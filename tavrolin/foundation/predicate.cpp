#include "tavrolin/foundation/predicate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::foundation {

namespace {

using Node = Predicate::Node;
using Expression = Predicate::Expression;
using Operator = Predicate::Operator;

constexpr int kDeepest = 64;

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowered(x) == lowered(y); });
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool startsWord(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

// --- From text to tree ------------------------------------------------------------------------

class Parser {
public:
    Parser(std::string_view format, std::vector<Value> arguments)
        : format_(format), arguments_(std::move(arguments)) {}

    Node whole() {
        Node result = disjunction(0);
        skipBlanks();
        if (at_ != format_.size()) fail("something follows the condition");
        if (next_ != arguments_.size()) {
            fail("it takes " + std::to_string(next_) + " arguments, not " +
                 std::to_string(arguments_.size()));
        }
        return result;
    }

private:
    [[noreturn]] void fail(const std::string& why) const {
        Exception::raise(Exception::kInvalidArgument, "the format \"" + std::string(format_) +
                                                          "\" is no predicate: " + why + " (at " +
                                                          std::to_string(at_) + ")");
    }

    std::string_view rest() const { return format_.substr(at_); }

    void skipBlanks() { at_ = std::min(format_.find_first_not_of(" \t\n\r", at_), format_.size()); }

    bool take(std::string_view sign) {
        skipBlanks();
        if (!rest().starts_with(sign)) return false;
        at_ += sign.size();
        return true;
    }

    // The word or key path that comes next; empty when something else does.
    std::string_view peekWord() {
        skipBlanks();
        if (at_ == format_.size() || !startsWord(format_[at_])) return {};
        std::size_t end = at_;
        while (end < format_.size() &&
               (startsWord(format_[end]) || isDigit(format_[end]) || format_[end] == '.')) {
            ++end;
        }
        return format_.substr(at_, end - at_);
    }

    bool takeWord(std::string_view word) {
        const std::string_view next = peekWord();
        if (!sameIgnoringCase(next, word)) return false;
        at_ += next.size();
        return true;
    }

    Node joined(Node::Kind kind, std::vector<Node> children) {
        if (children.size() == 1) return std::move(children.front());
        Node node;
        node.kind = kind;
        node.children = std::move(children);
        return node;
    }

    Node disjunction(int depth) {
        std::vector<Node> children;
        do {
            children.push_back(conjunction(depth));
        } while (takeWord("OR") || take("||"));
        return joined(Node::Kind::disjunction, std::move(children));
    }

    Node conjunction(int depth) {
        std::vector<Node> children;
        do {
            children.push_back(condition(depth));
        } while (takeWord("AND") || take("&&"));
        return joined(Node::Kind::conjunction, std::move(children));
    }

    Node condition(int depth) {
        if (depth == kDeepest) fail("it is nested too deeply");
        if (takeWord("NOT") || take("!")) {
            Node node;
            node.kind = Node::Kind::negation;
            node.children.push_back(condition(depth + 1));
            return node;
        }
        if (take("(")) {
            Node node = disjunction(depth + 1);
            if (!take(")")) fail("a closing parenthesis is missing");
            return node;
        }
        return comparison();
    }

    Node comparison() {
        Node node;
        node.left = expression();
        node.op = comparisonOperator();
        if (take("[")) {
            const bool textual = node.op == Operator::equal || node.op == Operator::beginsWith ||
                                 node.op == Operator::endsWith || node.op == Operator::contains;
            if (!textual || !takeWord("c") || !take("]")) fail("an unknown modifier");
            node.ignoresCase = true;
        }
        node.right = expression();
        return node;
    }

    Operator comparisonOperator() {
        static constexpr std::pair<std::string_view, Operator> kSigns[] = {
            {"==", Operator::equal},
            {"!=", Operator::notEqual},
            {"<>", Operator::notEqual},
            {"<=", Operator::lessOrEqual},
            {">=", Operator::greaterOrEqual},
            {"=", Operator::equal},
            {"<", Operator::less},
            {">", Operator::greater}};
        static constexpr std::pair<std::string_view, Operator> kWords[] = {
            {"IN", Operator::in},
            {"BEGINSWITH", Operator::beginsWith},
            {"ENDSWITH", Operator::endsWith},
            {"CONTAINS", Operator::contains}};
        for (const auto& [sign, op] : kSigns) {
            if (take(sign)) return op;
        }
        for (const auto& [word, op] : kWords) {
            if (takeWord(word)) return op;
        }
        fail("an operator is missing");
    }

    Expression expression() {
        if (const std::string_view word = peekWord(); !word.empty()) return named(word);
        if (at_ == format_.size()) fail("a side is missing");
        if (take("%@")) return constant(argument());
        if (take("%d")) {
            Value number = argument();
            if (!number.isNumber() || number.kind() == Value::Kind::real) {
                fail("%d takes an integer, not " + std::string(Value::kindName(number.kind())));
            }
            return constant(std::move(number));
        }
        const char first = format_[at_];
        if (first == '"' || first == '\'') return constant(quoted());
        return constant(number());
    }

    Expression named(std::string_view word) {
        static constexpr std::array<std::string_view, 7> kReserved = {
            "AND", "OR", "NOT", "IN", "BEGINSWITH", "ENDSWITH", "CONTAINS"};
        for (const std::string_view reserved : kReserved) {
            if (sameIgnoringCase(word, reserved)) fail("a side is missing");
        }
        if (takeWord("TRUE")) return constant(true);
        if (takeWord("FALSE")) return constant(false);
        if (takeWord("NIL")) return constant({});
        Expression result;
        if (takeWord("SELF")) {
            result.kind = Expression::Kind::self;
            return result;
        }
        if (word.ends_with('.') || word.find("..") != std::string_view::npos) {
            fail("a key path with an empty component");
        }
        at_ += word.size();
        result.kind = Expression::Kind::keyPath;
        result.keyPath = word;
        return result;
    }

    static Expression constant(Value value) {
        Expression result;
        result.constant = std::move(value);
        return result;
    }

    Value argument() {
        if (next_ == arguments_.size()) fail("an argument is missing");
        return std::move(arguments_[next_++]);
    }

    // A backslash takes the character behind it as it stands.
    Value quoted() {
        const char quote = format_[at_++];
        std::string text;
        for (; at_ < format_.size(); ++at_) {
            if (format_[at_] == quote) {
                ++at_;
                return text;
            }
            if (format_[at_] == '\\' && ++at_ == format_.size()) break;
            text += format_[at_];
        }
        fail("a quotation mark is missing");
    }

    Value number() {
        const std::size_t sign = format_[at_] == '+' || format_[at_] == '-' ? 1 : 0;
        if (at_ + sign == format_.size() || !isDigit(format_[at_ + sign])) {
            fail("a side is missing");
        }
        const char* begin = format_.data() + at_ + (format_[at_] == '+' ? 1 : 0);
        const char* const end = format_.data() + format_.size();
        std::int64_t integer = 0;
        double real = 0;
        const auto whole = std::from_chars(begin, end, integer);
        const auto any = std::from_chars(begin, end, real);
        if (any.ec != std::errc() || (any.ptr != end && startsWord(*any.ptr))) fail("a bad number");
        at_ = static_cast<std::size_t>(any.ptr - format_.data());
        if (whole.ec == std::errc() && whole.ptr == any.ptr) return integer;
        return real;
    }

    std::string_view format_;
    std::size_t at_ = 0;
    std::vector<Value> arguments_;
    std::size_t next_ = 0;
};

// --- On a value -------------------------------------------------------------------------------

bool holds(std::string_view text, std::string_view part, Operator op) {
    switch (op) {
        case Operator::beginsWith:
            return text.starts_with(part);
        case Operator::endsWith:
            return text.ends_with(part);
        default:
            return text.find(part) != std::string_view::npos;
    }
}

bool isMember(const Value& item, const Value& collection) {
    if (collection.isDictionary()) {
        const auto entries = collection.entries();
        return std::any_of(entries.begin(), entries.end(),
                           [&](const Value::Entry& entry) { return entry.value == item; });
    }
    const auto items = collection.items();
    return std::find(items.begin(), items.end(), item) != items.end();
}

bool isCollection(const Value& value) {
    return value.isArray() || value.isDictionary();
}

bool isEqual(const Value& left, const Value& right, bool ignoresCase) {
    if (ignoresCase && left.isString() && right.isString()) {
        return sameIgnoringCase(left.string(), right.string());
    }
    return left == right;
}

bool satisfies(const Value& left, Operator op, bool ignoresCase, const Value& right) {
    if (op == Operator::equal) return isEqual(left, right, ignoresCase);
    if (op == Operator::notEqual) return !isEqual(left, right, ignoresCase);
    if (left.isNil() || right.isNil()) return false;
    switch (op) {
        case Operator::less:
            return compare(left, right) < 0;
        case Operator::lessOrEqual:
            return compare(left, right) <= 0;
        case Operator::greater:
            return compare(left, right) > 0;
        case Operator::greaterOrEqual:
            return compare(left, right) >= 0;
        case Operator::in:
            if (!isCollection(right)) {
                Exception::raise(Exception::kInvalidArgument,
                                 "IN needs a collection on its right side, not " +
                                     std::string(Value::kindName(right.kind())));
            }
            return isMember(left, right);
        default:
            break;
    }
    if (op == Operator::contains && isCollection(left)) return isMember(right, left);
    if (!ignoresCase) return holds(left.string(), right.string(), op);
    const Value text = left.lowercaseString();
    const Value part = right.lowercaseString();
    return holds(text.string(), part.string(), op);
}

Value valueOf(const Expression& side, const Predicate::KeyPathValue& object) {
    switch (side.kind) {
        case Expression::Kind::keyPath:
            return object(side.keyPath);
        case Expression::Kind::self:
            return object({});
        default:
            return side.constant;
    }
}

bool isTrue(const Node& node, const Predicate::KeyPathValue& object) {
    const auto child = [&](const Node& each) { return isTrue(each, object); };
    switch (node.kind) {
        case Node::Kind::conjunction:
            return std::all_of(node.children.begin(), node.children.end(), child);
        case Node::Kind::disjunction:
            return std::any_of(node.children.begin(), node.children.end(), child);
        case Node::Kind::negation:
            return !child(node.children.front());
        default:
            return satisfies(valueOf(node.left, object), node.op, node.ignoresCase,
                             valueOf(node.right, object));
    }
}

Value valueAtPath(const Value& object, std::string_view path) {
    Value result = object;
    while (!path.empty()) {
        const std::size_t dot = std::min(path.find('.'), path.size());
        result = Value(result[path.substr(0, dot)]);
        path.remove_prefix(std::min(dot + 1, path.size()));
    }
    return result;
}

template <class T>
int order(const T& a, const T& b) {
    return a < b ? -1 : static_cast<int>(b < a);
}

// What is no number comes first, so that sorting has a total order.
int orderOfReals(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return order(std::isnan(b), std::isnan(a));
    return order(a, b);
}

}  // namespace

std::shared_ptr<const Predicate> Predicate::withFormat(std::string_view format,
                                                       std::vector<Value> arguments) {
    auto predicate = std::make_shared<Predicate>();
    predicate->root_ = Parser(format, std::move(arguments)).whole();
    return predicate;
}

bool Predicate::evaluate(const KeyPathValue& object) const {
    return isTrue(root_, object);
}

bool Predicate::evaluate(const Value& object) const {
    return evaluate([&](std::string_view keyPath) { return valueAtPath(object, keyPath); });
}

int compare(const Value& a, const Value& b) {
    if (a.isString() && b.isString()) return order(a.string(), b.string());
    if (a.kind() == Value::Kind::date && b.kind() == Value::Kind::date) {
        return orderOfReals(a.date().secondsSince1970, b.date().secondsSince1970);
    }
    if (a.isNumber() && b.isNumber()) {
        if (a.kind() == Value::Kind::real || b.kind() == Value::Kind::real) {
            return orderOfReals(a.doubleValue(), b.doubleValue());
        }
        if (a.isUnsigned() != b.isUnsigned()) return a.isUnsigned() ? 1 : -1;
        return order(a.integerValue(), b.integerValue());  // two large ones keep their order so
    }
    Exception::raise(Exception::kInvalidArgument, std::string(Value::kindName(a.kind())) +
                                                      " can't be ordered against " +
                                                      std::string(Value::kindName(b.kind())));
}

}  // namespace tavrolin::foundation
