#pragma once

#include <string_view>

#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin::ui {

/// A constraint as it is written: `title.width <= 0.5 * self.width - 8 @750`. The second item may
/// be absent; its factor may stand before it or, with * or /, behind it.
struct ConstraintText {
    std::string_view firstItem;
    LayoutAttribute firstAttribute = LayoutAttribute::none;
    LayoutRelation relation = LayoutRelation::equal;
    std::string_view secondItem;
    LayoutAttribute secondAttribute = LayoutAttribute::none;
    double multiplier = 1;
    double constant = 0;
    LayoutPriority priority = priority::required;

    /// The items' names lie in `text`. Raises `foundation::Exception` with the column (from 1) and
    /// what was expected there.
    static ConstraintText parse(std::string_view text);
};

}  // namespace tavrolin::ui
