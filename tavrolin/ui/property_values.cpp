#include "tavrolin/ui/property_values.h"

#include <cmath>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin::ui {

using foundation::Value;

namespace property {

void refuse(std::string_view expected, const Value& value) {
    constexpr std::size_t kShown = 60;
    std::string shown = value.description();
    if (shown.size() > kShown) shown = shown.substr(0, kShown) + "…";
    foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                 std::string(expected) + " expected, not " + shown);
}

bool boolean(const Value& value) {
    if (value.kind() != Value::Kind::boolean) refuse("true or false", value);
    return value.boolValue();
}

std::int64_t integer(const Value& value) {
    if (value.kind() != Value::Kind::integer) refuse("an integer", value);
    return value.integerValue();
}

double number(const Value& value) {
    const bool isNumber = value.kind() == Value::Kind::integer || value.kind() == Value::Kind::real;
    if (!isNumber || !std::isfinite(value.doubleValue())) refuse("a number", value);
    return value.doubleValue();
}

double length(const Value& value) {
    const double result = number(value);
    if (result < 0) refuse("a number from 0", value);
    return result;
}

std::string_view text(const Value& value) {
    if (!value.isString()) refuse("a text", value);
    return value.string();
}

DynamicColor color(const Value& value) {
    return colorFromValue(value);
}

std::optional<DynamicColor> optionalColor(const Value& value) {
    if (value.isNull()) return std::nullopt;
    return colorFromValue(value);
}

std::shared_ptr<Image> asset(const Value& value) {
    // Where it will be shown isn't known yet; its size in points is the same for every scale.
    constexpr double kLargestScale = 3;
    return Image::named(text(value), platform::current().bundles->library(), kLargestScale);
}

}  // namespace property

namespace {

struct Named {
    std::string_view name;
    const DynamicColor& color;
};
constexpr DynamicColor kClear = platform::Color::clear();
constexpr Named kPalette[] = {
    {"label", palette::label},
    {"secondaryLabel", palette::secondaryLabel},
    {"separator", palette::separator},
    {"fill", palette::fill},
    {"background", palette::background},
    {"tint", palette::tint},
    {"clear", kClear},
};

std::optional<platform::Color> hexColor(std::string_view text) {
    if (text.size() != 7 && text.size() != 9) return std::nullopt;
    if (text.front() != '#') return std::nullopt;
    unsigned long bits = 0;
    for (const char c : text.substr(1)) {
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0) return std::nullopt;
        bits = bits << 4U | static_cast<unsigned long>(digit);
    }
    return platform::Color::rgba(text.size() == 7 ? bits << 8U | 0xFFU : bits);
}

}  // namespace

DynamicColor colorFromValue(const Value& value) {
    if (value.isString()) {
        for (const auto& [name, color] : kPalette) {
            if (value.string() == name) return color;
        }
        if (const auto color = hexColor(value.string())) return *color;
    } else if (value.isDictionary() && value.count() == 2) {
        const auto light = hexColor(foundation::stringOrEmpty(value["light"]));
        const auto dark = hexColor(foundation::stringOrEmpty(value["dark"]));
        if (light && dark) return {*light, *dark};
    }
    property::refuse("a colour", value);
}

}  // namespace tavrolin::ui
