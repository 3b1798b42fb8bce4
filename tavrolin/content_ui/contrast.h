#pragma once

#include "tavrolin/platform/color.h"

namespace tavrolin {

/// How light a colour is to the eye, from 0 (black) to 1 (white); the relative luminance of WCAG 2.
/// Its opacity doesn't count.
double luminance(const platform::Color& color);

/// Black or white, whichever stands out more against the colour.
platform::Color readableOn(const platform::Color& color);

}  // namespace tavrolin
