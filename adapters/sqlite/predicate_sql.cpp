#include "adapters/sqlite/predicate_sql.h"

#include <utility>

namespace tavrolin::adapters::sqlite {

using foundation::Predicate;
using foundation::Value;
using platform::EntityDescription;
using Operator = foundation::Predicate::Operator;
using Kind = foundation::Value::Kind;

namespace {

bool isNumeric(Kind kind) {
    return kind == Kind::boolean || kind == Kind::integer || kind == Kind::real;
}

// SQLite would convert one kind into another before it compares; a predicate never does.
bool areComparable(Kind a, Kind b) {
    return a == b || (isNumeric(a) && isNumeric(b));
}

// SQL knows a third truth, predicates know two. A comparison with NULL is merely not true at the
// top, where indices matter; below a NOT it has to be false.
class Compiler {
public:
    explicit Compiler(const EntityDescription& entity) : entity_(entity) {}

    std::string node(const Predicate::Node& node, bool isNegated);
    std::vector<Value> arguments;

private:
    struct Side {
        std::string sql;
        Kind kind = Kind::nil;
        const Value* constant = nullptr;
    };

    Side side(const Predicate::Expression& expression);
    std::string argument(const Value& value) {
        arguments.push_back(value);
        return "?";
    }
    std::string comparison(const Predicate::Node& node, bool isNegated);
    std::string equality(const Predicate::Node& node);
    std::string membership(const Predicate::Expression& item, const Value& collection,
                           bool isNegated);
    std::string match(const Predicate::Node& node, Operator op);

    const EntityDescription& entity_;
};

std::string Compiler::node(const Predicate::Node& node, bool isNegated) {
    switch (node.kind) {
        case Predicate::Node::Kind::comparison:
            return comparison(node, isNegated);
        case Predicate::Node::Kind::negation:
            return "NOT (" + this->node(node.children.front(), true) + ")";
        case Predicate::Node::Kind::conjunction:
        case Predicate::Node::Kind::disjunction:
            break;
    }
    const bool isAnd = node.kind == Predicate::Node::Kind::conjunction;
    std::string sql = "(";
    for (const Predicate::Node& child : node.children) {
        if (sql.size() > 1) sql += isAnd ? " AND " : " OR ";
        sql += this->node(child, isNegated);
    }
    if (node.children.empty()) sql += isAnd ? '1' : '0';
    return sql + ")";
}

Compiler::Side Compiler::side(const Predicate::Expression& expression) {
    switch (expression.kind) {
        case Predicate::Expression::Kind::self:
            return {std::string(kIDColumn), Kind::integer, nullptr};
        case Predicate::Expression::Kind::keyPath: {
            const std::size_t index = *entity_.indexOf(expression.keyPath);
            return {quoted(expression.keyPath), platform::kindOf(entity_.attributes[index].type),
                    nullptr};
        }
        case Predicate::Expression::Kind::constant:
            break;
    }
    const Value& value = expression.constant;
    if (value.isNil()) return {"NULL", Kind::nil, &value};
    return {argument(value), value.kind(), &value};
}

std::string Compiler::equality(const Predicate::Node& node) {
    if (node.ignoresCase) return match(node, Operator::equal);
    const std::size_t before = arguments.size();
    const Side left = side(node.left);
    const Side right = side(node.right);
    if (left.kind == Kind::nil || right.kind == Kind::nil || areComparable(left.kind, right.kind)) {
        return left.sql + " IS " + right.sql;
    }
    arguments.resize(before);
    if (left.constant != nullptr || right.constant != nullptr) return "0";
    return "(" + left.sql + " IS NULL AND " + right.sql + " IS NULL)";  // nil equals nil
}

std::string Compiler::match(const Predicate::Node& node, Operator op) {
    // In two steps: the sides' arguments have to come in this order.
    const std::string left = side(node.left).sql;
    const std::string right = side(node.right).sql;
    return "tavrolin_match(" + left + ", " + right + ", " + std::to_string(static_cast<int>(op)) +
           ", " + (node.ignoresCase ? "1" : "0") + ")";
}

std::string Compiler::membership(const Predicate::Expression& item, const Value& collection,
                                 bool isNegated) {
    const Side left = side(item);
    std::string list;
    const auto add = [&](const Value& element) {
        if (!areComparable(left.kind, element.kind())) return;
        if (!list.empty()) list += ", ";
        list += argument(element);
    };
    if (collection.isArray()) {
        for (const Value& element : collection.items())
            add(element);
    } else if (collection.isDictionary()) {
        for (const auto& entry : collection.entries())
            add(entry.value);
    }
    std::string sql = left.sql + " IN (" + list + ")";
    if (isNegated) sql = "COALESCE(" + sql + ", 0)";
    return sql;
}

std::string Compiler::comparison(const Predicate::Node& node, bool isNegated) {
    const auto ordering = [&](const char* op) {
        const std::string left = side(node.left).sql;
        const std::string right = side(node.right).sql;
        const std::string sql = left + op + right;
        return isNegated ? "COALESCE(" + sql + ", 0)" : sql;
    };
    switch (node.op) {
        case Operator::equal:
            return equality(node);
        case Operator::notEqual:
            return "NOT (" + equality(node) + ")";
        case Operator::less:
            return ordering(" < ");
        case Operator::lessOrEqual:
            return ordering(" <= ");
        case Operator::greater:
            return ordering(" > ");
        case Operator::greaterOrEqual:
            return ordering(" >= ");
        case Operator::in:
            return membership(node.left, node.right.constant, isNegated);
        case Operator::contains:
            if (node.left.constant.isArray()) {
                return membership(node.right, node.left.constant, isNegated);
            }
            return match(node, node.op);
        case Operator::beginsWith:
        case Operator::endsWith:
            return match(node, node.op);
    }
    return "0";
}

}  // namespace

std::string quoted(std::string_view name) {
    std::string sql = "\"";
    for (const char c : name) {
        sql += c;
        if (c == '"') sql += c;
    }
    return sql + "\"";
}

Condition conditionFor(const EntityDescription& entity, const Predicate& predicate) {
    Compiler compiler(entity);
    std::string sql = compiler.node(predicate.root(), false);
    return {std::move(sql), std::move(compiler.arguments)};
}

}  // namespace tavrolin::adapters::sqlite
