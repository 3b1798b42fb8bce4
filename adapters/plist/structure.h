#pragma once

#include <string_view>

namespace tavrolin::adapters::plist {

constexpr int kDeepest = 64;
constexpr unsigned long kMostValues = 100'000;

/// Whether a property list stays within the bounds, found out without building anything. The
/// library that reads them is recursive, and builds a value anew each time that it is referred to.
bool xmlIsWithinBounds(std::string_view text);
bool binaryIsWithinBounds(std::string_view bytes);

}  // namespace tavrolin::adapters::plist
