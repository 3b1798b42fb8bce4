#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tavrolin/platform/styled_text.h"

namespace tavrolin::adapters::html {

enum class Display : std::int8_t { inlined, block, none };
enum class WhiteSpace : std::int8_t { collapsed, kept, lineEndsKept };
enum class TextTransform : std::int8_t { none, uppercase, lowercase, capitalize };

/// The computed style of an element.
struct Style {
    double fontSize = 16;  // CSS's "medium"
    int weight = 400;
    bool italic = false;
    bool monospaced = false;
    std::optional<platform::Color> color;
    std::optional<platform::Color> background;  // shines through what is inside
    platform::Script script = platform::Script::normal;
    std::optional<platform::TextAlignment> alignment;
    WhiteSpace whiteSpace = WhiteSpace::collapsed;
    TextTransform transform = TextTransform::none;
    bool listMarkers = true;

    // Lines of the elements around it go through it, whatever it says itself.
    bool underlinedAround = false;
    bool struckAround = false;

    // Its own, not handed down.
    Display display = Display::inlined;
    bool underline = false;
    bool strikethrough = false;

    /// What a child starts from.
    Style handedDown() const;
    platform::TextAttributes attributes() const;
};

/// Applies one declaration; both texts in lower case and without blanks around them. What is not
/// understood changes nothing.
struct StyleContext {
    const Style& parent;
    double rootFontSize;
};
void applyDeclaration(Style& style, const StyleContext& context, std::string_view property,
                      std::string_view value);

/// As <font size=…> has it: 1 to 7, or a step from 3 with a sign.
std::optional<double> legacyFontSize(std::string_view value);

}  // namespace tavrolin::adapters::html
