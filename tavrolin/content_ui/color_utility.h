#pragma once

#include <optional>

#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/color.h"
#include "tavrolin/ui/view.h"

namespace tavrolin {

/// Colours of payloads, and gradients made of them. Main thread.
class CVNColorUtility {
public:
    /// "RRGGBB" or "RRGGBBAA", with or without "#": the opacity is last. What is no text, and the
    /// empty text, give nothing; texts of other lengths are read as one number and give what they
    /// give.
    static std::optional<platform::Color> colorFromHexString(const foundation::Value& hexString);

    /// Puts a gradient behind what the view shows and clears its background. The array holds the
    /// type, both colours and the angle; raises `foundation::Exception` when it is shorter, and for
    /// a type or an angle that is neither a number nor a text.
    static void addBackgroundGradientColor(ui::View& view,
                                           const foundation::Value& withColorsArray);
    /// Type 1 runs along the angle, 0, 45 … 315 degrees; every other type, and every other angle,
    /// from left to right. The gradient's frame is the view's bounds of now.
    static void addBackgroundGradient(ui::View& view, const foundation::Value& ofGradientType,
                                      const foundation::Value& withStartColor,
                                      const foundation::Value& endColor,
                                      const foundation::Value& andGradientAngle);
    /// Takes away what the two above have put there.
    static void removeBackgroundGradients(ui::View& view);
};

}  // namespace tavrolin
