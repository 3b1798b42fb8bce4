#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin::foundation {

/// A condition on values and records, made from a format text such as
/// "(scheduledDate > %@ AND currentStatus = %@)" and its arguments.
///
/// Format: comparisons `left op right` joined by AND (&&), OR (||) and NOT (!), with parentheses;
/// words in any case. Operators: = == != <> < <= > >= IN BEGINSWITH ENDSWITH CONTAINS, the last
/// three and = with [c] to ignore ASCII case. A side is a key path (`cvnPayload.trid`), SELF, a
/// quoted text, a number, TRUE, FALSE, NIL, `%@` (any value) or `%d` (an integer).
///
/// Comparing with nil: = and != compare identity (nil = nil is true); every other operator is
/// false. Ordering needs two numbers, two dates or two texts (by bytes); other pairs raise
/// `Exception`, as does IN with a right side that is no collection. A predicate is immutable;
/// threads: any.
class Predicate {
public:
    enum class Operator {
        equal,
        notEqual,
        less,
        lessOrEqual,
        greater,
        greaterOrEqual,
        in,
        beginsWith,
        endsWith,
        contains
    };

    struct Expression {
        enum class Kind { keyPath, self, constant } kind = Kind::constant;
        std::string keyPath;
        Value constant;
    };

    struct Node {
        enum class Kind { conjunction, disjunction, negation, comparison } kind = Kind::comparison;
        std::vector<Node> children;  // of the first three; one for a negation
        Expression left;
        Operator op = Operator::equal;
        bool ignoresCase = false;
        Expression right;
    };

    /// Raises `Exception` when the text is no predicate or the arguments don't fit it.
    static std::shared_ptr<const Predicate> withFormat(std::string_view format,
                                                       std::vector<Value> arguments = {});

    const Node& root() const { return root_; }

    /// Gives the value at a key path of the object under test ("" for SELF); raises `Exception` for
    /// a path that the object doesn't know.
    using KeyPathValue = std::function<Value(std::string_view keyPath)>;
    bool evaluate(const KeyPathValue& object) const;
    /// On a dictionary (dots go down into dictionaries) or, through SELF, on any value.
    bool evaluate(const Value& object) const;

private:
    Node root_;
};

/// The order of two texts, numbers or dates: negative, 0 or positive. Raises for other pairs.
int compare(const Value& a, const Value& b);

struct SortDescriptor {
    std::string key;
    bool ascending = true;
};

}  // namespace tavrolin::foundation
