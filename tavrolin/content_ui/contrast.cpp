#include "tavrolin/content_ui/contrast.h"

#include <cmath>

namespace tavrolin {

using platform::Color;

double luminance(const Color& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

Color readableOn(const Color& color) {
    static constexpr double kEqual = 0.179;  // the contrast to both is the same
    return luminance(color) < kEqual ? Color::white() : Color::black();
}

}  // namespace tavrolin
