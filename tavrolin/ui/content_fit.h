#pragma once

#include <algorithm>
#include <cstdint>

#include "tavrolin/platform/geometry.h"

namespace tavrolin::ui {

enum class ContentMode : std::int8_t { scaleToFill, scaleAspectFit, scaleAspectFill, center };

/// Where a content of that size is drawn in the bounds.
inline platform::Rect placeOf(platform::Size content, const platform::Rect& bounds,
                              ContentMode mode) {
    if (mode == ContentMode::scaleToFill || !(content.width > 0) || !(content.height > 0)) {
        return bounds;
    }
    const double across = bounds.width / content.width;
    const double down = bounds.height / content.height;
    const double factor = mode == ContentMode::scaleAspectFit    ? std::min(across, down)
                          : mode == ContentMode::scaleAspectFill ? std::max(across, down)
                                                                 : 1;
    const platform::Size size{content.width * factor, content.height * factor};
    return {bounds.x + (bounds.width - size.width) / 2,
            bounds.y + (bounds.height - size.height) / 2, size.width, size.height};
}

}  // namespace tavrolin::ui
