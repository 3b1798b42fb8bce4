#pragma once

#include <cstdint>
#include <string_view>

namespace tavrolin::ui {

enum class TextDirection : std::int8_t { none, leftToRight, rightToLeft };

/// The direction of the first character that has one of its own; none where there are only digits,
/// punctuation, symbols, emoji and marks. The text is UTF-8. Threads: any.
TextDirection directionOf(std::string_view text) noexcept;

}  // namespace tavrolin::ui
