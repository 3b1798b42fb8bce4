#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/predicate.h"
#include "tavrolin/platform/record_store.h"

namespace tavrolin::adapters::sqlite {

/// The columns that a table has beside its entity's attributes.
inline constexpr std::string_view kIDColumn = "_id";
inline constexpr std::string_view kVersionColumn = "_version";

/// A name as SQL quotes it.
std::string quoted(std::string_view name);

struct Condition {
    std::string sql;
    std::vector<foundation::Value> arguments;  // of its parameters, in order
};

/// A predicate that was checked against the entity, as a condition that is true of exactly the rows
/// that the predicate holds for. Every constant is an argument.
Condition conditionFor(const platform::EntityDescription& entity,
                       const foundation::Predicate& predicate);

}  // namespace tavrolin::adapters::sqlite
