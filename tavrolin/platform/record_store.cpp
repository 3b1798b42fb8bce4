#include "tavrolin/platform/record_store.h"

#include <algorithm>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::platform {

using foundation::Exception;
using foundation::Predicate;
using foundation::Value;

namespace {

template <class Items>
std::optional<std::size_t> positionOf(const Items& items, std::string_view name) {
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&](const auto& item) { return item.name == name; });
    if (found == items.end()) return std::nullopt;
    return static_cast<std::size_t>(found - items.begin());
}

[[noreturn]] void refuse(std::string reason) {
    Exception::raise(Exception::kInvalidArgument, std::move(reason));
}

const AttributeDescription& checkedAttribute(const EntityDescription& entity,
                                             std::string_view name) {
    const auto index = entity.indexOf(name);
    if (!index) {
        refuse("entity " + entity.name + " has no property named " + std::string(name));
    }
    return entity.attributes[*index];
}

bool isNumeric(Value::Kind kind) {
    return kind == Value::Kind::boolean || kind == Value::Kind::integer ||
           kind == Value::Kind::real;
}

bool isOrdered(Value::Kind kind) {
    return isNumeric(kind) || kind == Value::Kind::string || kind == Value::Kind::date;
}

bool isCollection(Value::Kind kind) {
    return kind == Value::Kind::array || kind == Value::Kind::dictionary;
}

// What is known of a side before any record is looked at.
Value::Kind kindOf(const EntityDescription& entity, const Predicate::Expression& side) {
    switch (side.kind) {
        case Predicate::Expression::Kind::constant:
            return side.constant.kind();
        case Predicate::Expression::Kind::self:
            return Value::Kind::integer;
        case Predicate::Expression::Kind::keyPath:
            return platform::kindOf(checkedAttribute(entity, side.keyPath).type);
    }
    return Value::Kind::nil;
}

void checkComparison(const EntityDescription& entity, const Predicate::Node& node) {
    const Value::Kind left = kindOf(entity, node.left);
    const Value::Kind right = kindOf(entity, node.right);
    using Operator = Predicate::Operator;
    switch (node.op) {
        case Operator::equal:
        case Operator::notEqual:
            return;
        case Operator::less:
        case Operator::lessOrEqual:
        case Operator::greater:
        case Operator::greaterOrEqual:
            if (left == Value::Kind::nil || right == Value::Kind::nil) return;
            if (!isOrdered(left) || !(left == right || (isNumeric(left) && isNumeric(right)))) {
                refuse("a predicate on " + entity.name + " orders " +
                       std::string(Value::kindName(left)) + " and " +
                       std::string(Value::kindName(right)));
            }
            return;
        case Operator::in:
            if (right != Value::Kind::nil && !isCollection(right)) {
                refuse("a predicate on " + entity.name + " looks for a value IN " +
                       std::string(Value::kindName(right)));
            }
            return;
        case Operator::contains:
            if (isCollection(left)) return;
            [[fallthrough]];
        case Operator::beginsWith:
        case Operator::endsWith:
            for (const Value::Kind side : {left, right}) {
                if (side == Value::Kind::string || side == Value::Kind::nil) continue;
                refuse("a predicate on " + entity.name + " compares the text of " +
                       std::string(Value::kindName(side)));
            }
            return;
    }
}

void checkNode(const EntityDescription& entity, const Predicate::Node& node) {
    if (node.kind == Predicate::Node::Kind::comparison) {
        checkComparison(entity, node);
        return;
    }
    for (const Predicate::Node& child : node.children) {
        checkNode(entity, child);
    }
}

}  // namespace

std::optional<std::size_t> EntityDescription::indexOf(std::string_view attribute) const {
    return positionOf(attributes, attribute);
}

const EntityDescription* ManagedObjectModel::entityNamed(std::string_view name) const {
    const auto index = positionOf(entities, name);
    return index ? &entities[*index] : nullptr;
}

foundation::Error storeError(StoreErrorCode code, std::string description,
                             std::string failureReason) {
    return {std::string(kStoreErrorDomain), static_cast<std::int64_t>(code), std::move(description),
            std::move(failureReason)};
}

const EntityDescription& checkedEntity(const ManagedObjectModel& model,
                                       const FetchRequest& request) {
    const EntityDescription* entity = model.entityNamed(request.entityName);
    if (entity == nullptr) {
        refuse("the model has no entity named " + request.entityName);
    }
    if (request.predicate) checkNode(*entity, request.predicate->root());
    if (request.sortDescriptor) checkedAttribute(*entity, request.sortDescriptor->key);
    for (const std::string& property : request.propertiesToFetch) {
        checkedAttribute(*entity, property);
    }
    for (const std::string& property : request.propertiesToGroupBy) {
        checkedAttribute(*entity, property);
    }
    for (const ExpressionDescription& expression : request.expressionsToFetch) {
        if (expression.function.empty()) continue;
        if (expression.function != "max:") {
            refuse("a request can't compute the function " + expression.function);
        }
        checkedAttribute(*entity, expression.keyPath);
    }
    return *entity;
}

Value::Kind kindOf(AttributeType type) {
    switch (type) {
        case AttributeType::integer:
        case AttributeType::objectID:
            return Value::Kind::integer;
        case AttributeType::real:
            return Value::Kind::real;
        case AttributeType::string:
            return Value::Kind::string;
        case AttributeType::boolean:
            return Value::Kind::boolean;
        case AttributeType::date:
            return Value::Kind::date;
        case AttributeType::data:
        case AttributeType::transformable:
            return Value::Kind::data;
    }
    return Value::Kind::nil;
}

Value checkedValue(const EntityDescription& entity, const AttributeDescription& attribute,
                   Value value) {
    const Value::Kind wanted = kindOf(attribute.type);
    if (value.isNil() || (value.kind() == wanted && !value.isUnsigned())) return value;
    if (value.isNumber() && wanted == Value::Kind::boolean) return value.boolValue();
    if (value.isNumber() && wanted == Value::Kind::real) return value.doubleValue();
    if (value.kind() == Value::Kind::boolean && wanted == Value::Kind::integer) {
        return value.integerValue();
    }
    refuse("the attribute " + entity.name + "." + attribute.name + " takes " +
           std::string(Value::kindName(wanted)) + ", not " +
           std::string(Value::kindName(value.kind())) +
           (value.isUnsigned() ? " beyond 63 bits" : ""));
}

std::vector<std::pair<std::size_t, Value>> checkedChanges(const EntityDescription& entity,
                                                          const Value& properties) {
    std::vector<std::pair<std::size_t, Value>> changes;
    for (const auto& [key, value] : properties.entries()) {
        const AttributeDescription& attribute = checkedAttribute(entity, key.string());
        changes.emplace_back(*entity.indexOf(key.string()),
                             value.isNull() ? Value() : checkedValue(entity, attribute, value));
    }
    return changes;
}

}  // namespace tavrolin::platform
