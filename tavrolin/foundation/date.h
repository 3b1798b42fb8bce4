#pragma once

#include <compare>

namespace tavrolin::foundation {

/// A moment, in seconds since 1970-01-01T00:00:00 UTC, leap seconds not counted.
struct Date {
    double secondsSince1970 = 0;

    auto operator<=>(const Date&) const = default;
};

/// Seconds from `from` to `to`; negative when `to` is the earlier one.
inline double secondsBetween(Date from, Date to) {
    return to.secondsSince1970 - from.secondsSince1970;
}

}  // namespace tavrolin::foundation
