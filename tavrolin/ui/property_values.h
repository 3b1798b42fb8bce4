#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tavrolin/foundation/value.h"
#include "tavrolin/ui/image.h"
#include "tavrolin/ui/traits.h"

namespace tavrolin::ui {

/// The value of a colour in an interface file. Raises `foundation::Exception`.
DynamicColor colorFromValue(const foundation::Value& value);

}  // namespace tavrolin::ui

/// The values of properties in interface files. Each raises `foundation::Exception` for a value of
/// another kind, with what was expected.
namespace tavrolin::ui::property {

[[noreturn]] void refuse(std::string_view expected, const foundation::Value& value);

bool boolean(const foundation::Value& value);
std::int64_t integer(const foundation::Value& value);
double number(const foundation::Value& value);  // finite
double length(const foundation::Value& value);  // finite, not negative
std::string_view text(const foundation::Value& value);
DynamicColor color(const foundation::Value& value);
std::optional<DynamicColor> optionalColor(const foundation::Value& value);  // null is none

/// The library's asset of that name; null when there is none, or it is no picture.
std::shared_ptr<Image> asset(const foundation::Value& value);

/// So many numbers in an array.
template <std::size_t count>
std::array<double, count> numbers(const foundation::Value& value) {
    if (!value.isArray() || value.count() != count) {
        refuse(std::to_string(count) + " numbers", value);
    }
    std::array<double, count> result{};
    for (std::size_t i = 0; i < count; ++i)
        result[i] = number(value.at(i));
    return result;
}

/// Any kind of margins: top, leading, bottom, trailing.
template <class Edges>
Edges edges(const foundation::Value& value) {
    const auto [top, leading, bottom, trailing] = numbers<4>(value);
    return {top, leading, bottom, trailing};
}

template <class Enum>
Enum oneOf(const foundation::Value& value,
           std::initializer_list<std::pair<std::string_view, Enum>> names) {
    std::string expected = "one of";
    for (const auto& [name, constant] : names) {
        if (value.isString() && value.string() == name) return constant;
        expected.append(" ").append(name);
    }
    refuse(expected, value);
}

}  // namespace tavrolin::ui::property
