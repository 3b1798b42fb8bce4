#include "tavrolin/content_ui/components/fitting_height.h"

#include <cmath>

#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin {

void setFittingHeight(ui::LayoutConstraint& constraint, double width, double ratio) {
    static constexpr double kSame = 1e-6;  // points
    const double height = width / ratio;
    if (!(width > 0 && ratio > 0) || !std::isfinite(height)) return;
    if (std::abs(constraint.constant() - height) > kSame) constraint.setConstant(height);
}

}  // namespace tavrolin
