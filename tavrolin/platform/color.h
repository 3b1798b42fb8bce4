#pragma once

namespace tavrolin::platform {

/// Components from 0 to 1 in sRGB, not premultiplied.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const Color&) const = default;

    static constexpr Color clear() { return {0, 0, 0, 0}; }
    static constexpr Color black() { return {0, 0, 0, 1}; }
    static constexpr Color white() { return {1, 1, 1, 1}; }
    /// From 0xRRGGBBAA.
    static constexpr Color rgba(unsigned long bits) {
        return {static_cast<double>(bits >> 24U & 0xFFU) / 255,
                static_cast<double>(bits >> 16U & 0xFFU) / 255,
                static_cast<double>(bits >> 8U & 0xFFU) / 255,
                static_cast<double>(bits & 0xFFU) / 255};
    }
};

}  // namespace tavrolin::platform
