#include "tavrolin/content_ui/color_utility.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tavrolin/core/logger.h"
#include "tavrolin/ui/layer.h"

namespace tavrolin {

using foundation::Value;
using platform::Point;

namespace {

int hexDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

// As the platform's scanner reads a hexadecimal number: after white space and a possible "0x" up to
// the first other character; the largest number when it is too large, 0 when there is none.
std::uint32_t scanHex(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    std::uint64_t number = 0;
    for (const char character : text) {
        const int digit = hexDigit(character);
        if (digit < 0) break;
        number = number * 16 + static_cast<std::uint64_t>(digit);
        if (number > std::numeric_limits<std::uint32_t>::max())
            return std::numeric_limits<std::uint32_t>::max();
    }
    return static_cast<std::uint32_t>(number);
}

// In unit coordinates, y growing downwards.
std::pair<Point, Point> pointsOfAngle(std::int64_t angle) {
    struct Entry {
        std::int64_t angle;
        Point start;
        Point end;
    };
    static constexpr std::array<Entry, 7> kEntries{{{0, {1, 1}, {1, 0}},
                                                    {45, {0, 1}, {1, 0}},
                                                    {135, {0, 0}, {1, 1}},
                                                    {180, {1, 0}, {1, 1}},
                                                    {225, {1, 0}, {0, 1}},
                                                    {270, {1, 1}, {0, 1}},
                                                    {315, {1, 1}, {0, 0}}}};
    for (const Entry& entry : kEntries) {
        if (entry.angle == angle) return {entry.start, entry.end};
    }
    return {{0, 1}, {1, 1}};
}

}  // namespace

std::optional<platform::Color> CVNColorUtility::colorFromHexString(const Value& hexString) {
    std::optional<platform::Color> color;
    guard(
        "+[CVNColorUtility colorFromHexString:]",
        "Unable to convert to UIColor due to exception: %@",
        [&] {
            std::string hex(foundation::stringOrEmpty(hexString));
            if (hex.empty()) return;
            if (hex.front() == '#') hex.erase(0, 1);
            if (hex.size() == 6) hex += "FF";
            color = platform::Color::rgba(scanHex(hex));
        },
        LogLevel::error);
    return color;
}

void CVNColorUtility::addBackgroundGradientColor(ui::View& view, const Value& withColorsArray) {
    view.setBackgroundColor(platform::Color::clear());
    addBackgroundGradient(view, withColorsArray.at(0), withColorsArray.at(1), withColorsArray.at(2),
                          withColorsArray.at(3));
}

void CVNColorUtility::addBackgroundGradient(ui::View& view, const Value& ofGradientType,
                                            const Value& withStartColor, const Value& endColor,
                                            const Value& andGradientAngle) {
    platform::Gradient gradient;
    for (const Value* hex : {&withStartColor, &endColor}) {
        if (const auto color = colorFromHexString(*hex)) gradient.colors.push_back(*color);
    }
    static constexpr std::int64_t kLeftToRight = 90;
    const std::int64_t angle =
        ofGradientType.integerValue() == 1 ? andGradientAngle.integerValue() : kLeftToRight;
    std::tie(gradient.start, gradient.end) = pointsOfAngle(angle);

    auto layer = std::make_shared<ui::GradientLayer>();
    layer->setFrame(view.bounds());
    layer->setGradient(std::move(gradient));
    layer->setMasksToBounds(true);
    view.layer().insertSublayer(std::move(layer), 0);
}

void CVNColorUtility::removeBackgroundGradients(ui::View& view) {
    const std::vector<std::shared_ptr<ui::Layer>> before = view.layer().sublayers();
    for (const auto& layer : before) {
        if (dynamic_cast<const ui::GradientLayer*>(layer.get()) != nullptr)
            view.layer().removeSublayer(*layer);
    }
}

}  // namespace tavrolin
