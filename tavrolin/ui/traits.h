#pragma once

#include <cstdint>

#include "tavrolin/platform/color.h"

namespace tavrolin::ui {

/// The numbers are the platform's.
enum class UserInterfaceStyle : std::int8_t { unspecified = 0, light = 1, dark = 2 };

enum class LayoutDirection : std::int8_t { leftToRight, rightToLeft };

/// What a view is shown in.
struct TraitCollection {
    UserInterfaceStyle userInterfaceStyle = UserInterfaceStyle::light;
    LayoutDirection layoutDirection = LayoutDirection::leftToRight;
    double displayScale = 2;  // pixels for a point, above 0

    /// Whether colours may look different; true when there is nothing to compare with.
    bool hasDifferentColorAppearanceComparedTo(const TraitCollection* other) const {
        return other == nullptr || other->userInterfaceStyle != userInterfaceStyle;
    }
    bool operator==(const TraitCollection&) const = default;
};

/// A colour that may be another one in the dark.
struct DynamicColor {
    platform::Color light;
    platform::Color dark;

    // NOLINTNEXTLINE(google-explicit-constructor): a plain colour is one that stays.
    constexpr DynamicColor(platform::Color color) : light(color), dark(color) {}
    constexpr DynamicColor(platform::Color inLight, platform::Color inDark)
        : light(inLight), dark(inDark) {}
    const platform::Color& resolved(UserInterfaceStyle style) const {
        return style == UserInterfaceStyle::dark ? dark : light;
    }
    bool operator==(const DynamicColor&) const = default;
};

/// The system's palette. Interface files know them by these names.
namespace palette {
inline constexpr DynamicColor label{platform::Color::rgba(0x000000FF),
                                    platform::Color::rgba(0xFFFFFFFF)};
inline constexpr DynamicColor secondaryLabel{platform::Color::rgba(0x3C3C43C0),
                                             platform::Color::rgba(0xEBEBF5B0)};
inline constexpr DynamicColor separator{platform::Color::rgba(0x3C3C434A),
                                        platform::Color::rgba(0x54545899)};
inline constexpr DynamicColor fill{platform::Color::rgba(0x78788033),
                                   platform::Color::rgba(0x7878805C)};
inline constexpr DynamicColor background{platform::Color::rgba(0xFFFFFFFF),
                                         platform::Color::rgba(0x1C1C1EFF)};
inline constexpr DynamicColor tint{platform::Color::rgba(0x0A6CFFFF),
                                   platform::Color::rgba(0x409CFFFF)};
}  // namespace palette

}  // namespace tavrolin::ui
