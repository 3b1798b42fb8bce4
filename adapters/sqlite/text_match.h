#pragma once

#include <algorithm>
#include <string_view>

#include "tavrolin/foundation/predicate.h"

namespace tavrolin::adapters::sqlite {

inline char foldedCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The text comparisons that SQL has no exact words for, by bytes.
inline bool textMatches(std::string_view left, std::string_view right,
                        foundation::Predicate::Operator op, bool ignoresCase) {
    using Operator = foundation::Predicate::Operator;
    const auto same = [ignoresCase](char a, char b) {
        return a == b || (ignoresCase && foldedCase(a) == foldedCase(b));
    };
    switch (op) {
        case Operator::equal:
            return std::equal(left.begin(), left.end(), right.begin(), right.end(), same);
        case Operator::beginsWith:
            return left.size() >= right.size() &&
                   std::equal(right.begin(), right.end(), left.begin(), same);
        case Operator::endsWith:
            return left.size() >= right.size() &&
                   std::equal(right.rbegin(), right.rend(), left.rbegin(), same);
        case Operator::contains:
            return std::search(left.begin(), left.end(), right.begin(), right.end(), same) !=
                       left.end() ||
                   right.empty();
        default:
            return false;
    }
}

}  // namespace tavrolin::adapters::sqlite
