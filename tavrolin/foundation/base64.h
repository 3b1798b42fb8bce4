#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrolin::foundation {

/// Base64 by RFC 4648, section 4: the standard alphabet, padded, on one line.
std::string base64Encoded(std::span<const std::uint8_t> bytes);

/// Nothing unless the text is exactly what `base64Encoded` would write for some bytes: whole groups
/// of four, padding at the end only, no blanks, and no bits set that padding leaves unused.
std::optional<std::vector<std::uint8_t>> base64Decoded(std::string_view text);

}  // namespace tavrolin::foundation
