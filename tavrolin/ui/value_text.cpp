#include "tavrolin/ui/value_text.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace tavrolin::ui {

using foundation::Value;

Value numberValue(double number) {
    constexpr double kLargest = 1e15;  // of which every thousandth is still exact enough
    if (!std::isfinite(number) || std::abs(number) > kLargest) return 0;
    const double rounded = std::round(number * 1000) / 1000;
    if (rounded == std::trunc(rounded)) return static_cast<std::int64_t>(rounded);
    return rounded;
}

Value numberList(std::initializer_list<double> numbers) {
    Value list = Value::arrayWithCapacity(numbers.size());
    for (const double number : numbers)
        list.append(numberValue(number));
    return list;
}

std::string hexText(const platform::Color& color) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "#";
    for (const double component : {color.red, color.green, color.blue, color.alpha}) {
        const double within = component > 0 ? std::min(component, 1.0) : 0;  // not a number: 0
        const auto byte = static_cast<unsigned>(std::lround(within * 255));
        text += {kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
    return text;
}

Value hexValue(const std::optional<DynamicColor>& color, UserInterfaceStyle style) {
    return color ? Value(hexText(color->resolved(style))) : Value::null();
}

}  // namespace tavrolin::ui
