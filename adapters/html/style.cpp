#include "adapters/html/style.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "adapters/html/characters.h"
#include "adapters/html/css_color.h"

namespace tavrolin::adapters::html {

namespace {

using platform::TextAlignment;

constexpr int kBoldFrom = 600;
constexpr double kLargestFontSize = 512;
constexpr double kStep = 1.2;  // between "smaller" and "larger"

template <class Value>
struct Keyword {
    std::string_view name;
    Value value;
};

template <class Value, std::size_t N>
std::optional<Value> lookUp(const Keyword<Value> (&table)[N], std::string_view name) {
    for (const auto& each : table) {
        if (each.name == name) return each.value;
    }
    return std::nullopt;
}

constexpr Keyword<double> kFontSizes[] = {{"xx-small", 9},  {"x-small", 10},  {"small", 13},
                                          {"medium", 16},   {"large", 18},    {"x-large", 24},
                                          {"xx-large", 32}, {"xxx-large", 48}};

std::optional<double> lengthInPoints(double number, std::string_view unit, double em, double rem) {
    const Keyword<double> units[] = {{"px", 1},         {"em", em},       {"%", em / 100},
                                     {"pt", 96.0 / 72}, {"rem", rem},     {"ex", em / 2},
                                     {"ch", em / 2},    {"pc", 16},       {"in", 96},
                                     {"cm", 96 / 2.54}, {"mm", 96 / 25.4}};
    if (unit.empty() && number == 0) return 0;
    if (const auto factor = lookUp(units, unit)) return number * *factor;
    return std::nullopt;
}

void setFontSize(Style& style, const StyleContext& context, std::string_view value) {
    const double around = context.parent.fontSize;
    std::optional<double> size = lookUp(kFontSizes, value);
    if (value == "inherit") size = around;
    if (value == "smaller") size = around / kStep;
    if (value == "larger") size = around * kStep;
    if (!size) {
        const auto number = leadingNumber(value);
        if (!number || number->first < 0) return;
        size = lengthInPoints(number->first, number->second, around, context.rootFontSize);
    }
    if (size) style.fontSize = std::min(*size, kLargestFontSize);
}

void setFontWeight(Style& style, const StyleContext& context, std::string_view value) {
    const int around = context.parent.weight;
    const Keyword<int> weights[] = {{"normal", 400},
                                    {"bold", 700},
                                    {"bolder", around < 600 ? 700 : 900},
                                    {"lighter", around < 600 ? 100 : 400},
                                    {"inherit", around}};
    if (const auto weight = lookUp(weights, value)) {
        style.weight = *weight;
        return;
    }
    const auto number = leadingNumber(value);
    if (number && number->second.empty() && number->first >= 1 && number->first <= 1000)
        style.weight = static_cast<int>(number->first);
}

void setFontStyle(Style& style, const StyleContext& context, std::string_view value) {
    if (value == "inherit") style.italic = context.parent.italic;
    if (value == "normal") style.italic = false;
    if (value == "italic" || value.starts_with("oblique")) style.italic = true;
}

void setFontFamily(Style& style, const StyleContext& context, std::string_view value) {
    if (value == "inherit") {
        style.monospaced = context.parent.monospaced;
        return;
    }
    // There is one family of letters, and one of equal widths.
    style.monospaced = false;
    for (const std::string_view name : {"mono", "courier", "menlo", "consolas"}) {
        if (value.find(name) != std::string_view::npos) style.monospaced = true;
    }
}

// "italic bold 15px/1.2 Arial": the family follows the size.
void setFont(Style& style, const StyleContext& context, std::string_view value) {
    if (value == "inherit") {
        style.fontSize = context.parent.fontSize;
        style.weight = context.parent.weight;
        style.italic = context.parent.italic;
        style.monospaced = context.parent.monospaced;
        return;
    }
    Style changed = style;
    changed.weight = 400;
    changed.italic = false;
    std::string_view rest = value;
    for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
        const bool isWeight = word == "bold" || word == "bolder" || word == "lighter" ||
                              (word.size() == 3 && word.ends_with("00"));
        const std::string_view size = word.substr(0, word.find('/'));
        const bool isSize = !isWeight && (lookUp(kFontSizes, size) || size == "smaller" ||
                                          size == "larger" || leadingNumber(size));
        if (isSize) {
            setFontSize(changed, context, size);
            setFontFamily(changed, context, withoutBlanks(rest));
            style = changed;
            return;
        }
        if (isWeight) setFontWeight(changed, context, word);
        if (word == "italic" || word == "oblique") changed.italic = true;
    }
}

void setColor(Style& style, const StyleContext& context, std::string_view value) {
    if (value == "inherit" || value == "currentcolor") style.color = context.parent.color;
    if (const auto color = cssColor(value)) style.color = color;
}

void setBackground(Style& style, const StyleContext& context, std::string_view value) {
    // Nothing of its own lets what is around shine through.
    if (value == "inherit" || value == "transparent" || value == "none")
        style.background = context.parent.background;
    std::string_view rest = value;
    if (const auto color = cssColor(value)) {
        if (color->alpha > 0) style.background = color;
        return;
    }
    for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
        const auto color = cssColor(word);
        if (color && color->alpha > 0) style.background = color;
    }
}

void setTextDecoration(Style& style, const StyleContext& context, std::string_view value) {
    std::string_view rest = value;
    bool underline = false;
    bool strikethrough = false;
    for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
        underline =
            underline || word == "underline" || (word == "inherit" && context.parent.underline);
        strikethrough = strikethrough || word == "line-through" ||
                        (word == "inherit" && context.parent.strikethrough);
    }
    style.underline = underline;
    style.strikethrough = strikethrough;
}

void setTextAlign(Style& style, const StyleContext& context, std::string_view value) {
    constexpr Keyword<TextAlignment> kAlignments[] = {{"left", TextAlignment::left},
                                                      {"center", TextAlignment::center},
                                                      {"right", TextAlignment::right},
                                                      {"justify", TextAlignment::justified},
                                                      {"-webkit-center", TextAlignment::center},
                                                      {"start", TextAlignment::natural}};
    if (value == "inherit") style.alignment = context.parent.alignment;
    if (const auto alignment = lookUp(kAlignments, value)) style.alignment = alignment;
}

void setVerticalAlign(Style& style, const StyleContext& context, std::string_view value) {
    using platform::Script;
    if (value == "inherit") style.script = context.parent.script;
    if (value == "super") style.script = Script::superscript;
    if (value == "sub") style.script = Script::subscript;
    if (value == "baseline") style.script = Script::normal;
}

void setDisplay(Style& style, const StyleContext& context, std::string_view value) {
    constexpr Keyword<Display> kDisplays[] = {
        {"none", Display::none},       {"inline", Display::inlined},
        {"block", Display::block},     {"inline-block", Display::inlined},
        {"flex", Display::block},      {"inline-flex", Display::inlined},
        {"grid", Display::block},      {"inline-grid", Display::inlined},
        {"table", Display::block},     {"inline-table", Display::inlined},
        {"list-item", Display::block}, {"flow-root", Display::block},
        {"table-row", Display::block}, {"table-cell", Display::inlined},
        {"contents", Display::inlined}};
    if (value == "inherit") style.display = context.parent.display;
    if (const auto display = lookUp(kDisplays, value)) style.display = *display;
}

void setWhiteSpace(Style& style, const StyleContext& context, std::string_view value) {
    constexpr Keyword<WhiteSpace> kWhiteSpaces[] = {
        {"normal", WhiteSpace::collapsed},  {"nowrap", WhiteSpace::collapsed},
        {"pre", WhiteSpace::kept},          {"pre-wrap", WhiteSpace::kept},
        {"break-spaces", WhiteSpace::kept}, {"pre-line", WhiteSpace::lineEndsKept}};
    if (value == "inherit") style.whiteSpace = context.parent.whiteSpace;
    if (const auto whiteSpace = lookUp(kWhiteSpaces, value)) style.whiteSpace = *whiteSpace;
}

void setTextTransform(Style& style, const StyleContext& context, std::string_view value) {
    constexpr Keyword<TextTransform> kTransforms[] = {{"none", TextTransform::none},
                                                      {"uppercase", TextTransform::uppercase},
                                                      {"lowercase", TextTransform::lowercase},
                                                      {"capitalize", TextTransform::capitalize}};
    if (value == "inherit") style.transform = context.parent.transform;
    if (const auto transform = lookUp(kTransforms, value)) style.transform = *transform;
}

void setListStyle(Style& style, const StyleContext& context, std::string_view value) {
    style.listMarkers = value == "inherit" ? context.parent.listMarkers
                                           : value.find("none") == std::string_view::npos;
}

using Setter = void (*)(Style&, const StyleContext&, std::string_view);

constexpr Keyword<Setter> kProperties[] = {{"color", setColor},
                                           {"font-size", setFontSize},
                                           {"font-weight", setFontWeight},
                                           {"font-style", setFontStyle},
                                           {"font-family", setFontFamily},
                                           {"font", setFont},
                                           {"background-color", setBackground},
                                           {"background", setBackground},
                                           {"text-decoration", setTextDecoration},
                                           {"text-decoration-line", setTextDecoration},
                                           {"text-align", setTextAlign},
                                           {"vertical-align", setVerticalAlign},
                                           {"display", setDisplay},
                                           {"white-space", setWhiteSpace},
                                           {"text-transform", setTextTransform},
                                           {"list-style", setListStyle},
                                           {"list-style-type", setListStyle}};

}  // namespace

Style Style::handedDown() const {
    Style child = *this;
    child.underlinedAround = underlinedAround || underline;
    child.struckAround = struckAround || strikethrough;
    child.display = Display::inlined;
    child.underline = false;
    child.strikethrough = false;
    return child;
}

platform::TextAttributes Style::attributes() const {
    return {.font = {.size = fontSize,
                     .bold = weight >= kBoldFrom,
                     .italic = italic,
                     .monospaced = monospaced},
            .color = color,
            .backgroundColor = background,
            .underline = underline || underlinedAround,
            .strikethrough = strikethrough || struckAround,
            .script = script};
}

void applyDeclaration(Style& style, const StyleContext& context, std::string_view property,
                      std::string_view value) {
    if (const auto setter = lookUp(kProperties, property)) (*setter)(style, context, value);
}

std::optional<double> legacyFontSize(std::string_view value) {
    constexpr std::array<double, 7> kSizes = {10, 13, 16, 18, 24, 32, 48};
    value = withoutBlanks(value);
    const bool isStep = value.starts_with('+') || value.starts_with('-');
    const auto number = leadingNumber(value);
    if (!number) return std::nullopt;
    const double index = std::clamp(number->first + (isStep ? 3 : 0), 1.0, 7.0);
    return kSizes[static_cast<std::size_t>(index) - 1];
}

}  // namespace tavrolin::adapters::html
