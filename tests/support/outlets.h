#pragma once

#include <string_view>

#include "tavrolin/ui/view.h"

namespace tavrolin::tests {

/// The view with that outlet, hidden or not; null when there is none.
inline ui::View* outlet(ui::View& root, std::string_view name) {
    if (root.outlet() == name) return &root;
    for (const auto& each : root.subviews()) {
        if (ui::View* const found = outlet(*each, name)) return found;
    }
    return nullptr;
}

}  // namespace tavrolin::tests
