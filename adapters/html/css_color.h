#pragma once

#include <optional>
#include <string_view>

#include "tavrolin/platform/color.h"

namespace tavrolin::adapters::html {

/// A colour as CSS writes it, in lower case: #rgb, #rgba, #rrggbb, #rrggbbaa, rgb(), rgba(), hsl(),
/// hsla() or a name.
std::optional<platform::Color> cssColor(std::string_view text);

}  // namespace tavrolin::adapters::html
