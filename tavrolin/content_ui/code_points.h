#pragma once

#include <string>
#include <string_view>

namespace tavrolin {

/// The characters of a text in UTF-8; what is none comes as U+FFFD.
std::u32string codePoints(std::string_view text);

/// Whether the first character that has a direction of its own runs right to left.
bool startsRightToLeft(std::string_view text);

}  // namespace tavrolin
