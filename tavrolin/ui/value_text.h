#pragma once

#include <initializer_list>
#include <optional>
#include <string>

#include "tavrolin/foundation/value.h"
#include "tavrolin/ui/traits.h"

// What the printed tree is made of.
namespace tavrolin::ui {

/// "#RRGGBBAA".
std::string hexText(const platform::Color& color);
/// The same; null for none.
foundation::Value hexValue(const std::optional<DynamicColor>& color, UserInterfaceStyle style);

/// Rounded to thousandths, whole ones as integers.
foundation::Value numberValue(double number);
foundation::Value numberList(std::initializer_list<double> numbers);

}  // namespace tavrolin::ui
