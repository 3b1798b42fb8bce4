#pragma once

namespace tavrolin::ui {
class LayoutConstraint;
}

namespace tavrolin {

/// Lets the constraint hold the height of something that is `width` wide, by its width-to-height
/// ratio. Does nothing for a width or a ratio that is not above 0, nor when it holds that already,
/// so that layout passes settle.
void setFittingHeight(ui::LayoutConstraint& constraint, double width, double ratio);

}  // namespace tavrolin
