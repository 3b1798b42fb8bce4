#pragma once

#include <string>
#include <string_view>

namespace tavrolin::foundation {

/// Whether the bytes are UTF-8 as RFC 3629 has it: no overlong forms, no surrogates, nothing above
/// U+10FFFF, nothing cut short.
bool isValidUtf8(std::string_view text) noexcept;

/// The text with each invalid sequence replaced by U+FFFD, one for each longest beginning of a
/// character that is cut short and one for every other byte that fits nowhere.
std::string repairedUtf8(std::string_view text);

/// Takes the first character off a text that is not empty, and gives it. Never reads beyond the
/// end; what valid UTF-8 can't hold gives some character or other.
char32_t takeCharacter(std::string_view& text) noexcept;

/// Each letter in lower case by itself, in the Latin, Greek, Cyrillic and Armenian scripts; the
/// rest as it is. No language's own rules.
std::string lowercase(std::string_view text);

/// The part of the text without blanks and line breaks, Unicode's included, at both ends.
std::string_view trimmed(std::string_view text) noexcept;

}  // namespace tavrolin::foundation
