#pragma once

#include <string>
#include <string_view>

#include "adapters/html/style.h"

namespace tavrolin::adapters::html {

/// The text in another case, letter by letter, in every script that has one; no language's own
/// rules. The text is UTF-8.
std::string transformed(std::string_view text, TextTransform transform);

}  // namespace tavrolin::adapters::html
