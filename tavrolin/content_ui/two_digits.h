#pragma once

#include <cstdint>
#include <string>

namespace tavrolin {

/// The number in decimal, with a zero before it where it would take less than two places.
inline std::string twoDigits(std::int64_t number) {
    std::string digits = std::to_string(number);
    if (digits.size() < 2) digits.insert(0, 1, '0');
    return digits;
}

}  // namespace tavrolin
