#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/platform/color.h"

namespace tavrolin::platform {

/// A face of the system's font family. Its size is in points.
struct Font {
    double size = 17;
    bool bold = false;
    bool italic = false;
    bool monospaced = false;
    /// Digits are all as wide as a zero, or less by what a face rounds, whatever stands beside
    /// them.
    bool tabularFigures = false;

    static constexpr Font systemFontOfSize(double size) { return {.size = size}; }
    static constexpr Font boldSystemFontOfSize(double size) { return {.size = size, .bold = true}; }
    bool operator==(const Font&) const = default;
};

/// The numbers are the platform's.
enum class LineBreakMode : std::int8_t {
    wordWrapping = 0,
    charWrapping = 1,
    clipping = 2,
    truncatingHead = 3,
    truncatingTail = 4,
    truncatingMiddle = 5
};

/// The numbers are the platform's. Natural: where the paragraph's own direction begins.
enum class TextAlignment : std::int8_t {
    left = 0,
    center = 1,
    right = 2,
    justified = 3,
    natural = 4
};

enum class Script : std::int8_t { normal, superscript, subscript };

struct TextAttributes {
    Font font;
    std::optional<Color> color = std::nullopt;  // none: whoever draws it chooses
    std::optional<Color> backgroundColor = std::nullopt;
    bool underline = false;
    bool strikethrough = false;
    Script script = Script::normal;
    bool operator==(const TextAttributes&) const = default;
};

/// Holds for the whole of a text. An absent alignment or line-break mode leaves it to the label.
struct ParagraphStyle {
    std::optional<TextAlignment> alignment = std::nullopt;
    std::optional<LineBreakMode> lineBreakMode = std::nullopt;
    bool operator==(const ParagraphStyle&) const = default;
};

/// A stretch of a text, in bytes, with its attributes.
struct TextRun {
    std::size_t length = 0;
    TextAttributes attributes;
    bool operator==(const TextRun&) const = default;
};

/// A text in which every stretch has attributes of its own. A value; UTF-8. The runs cover the text
/// without gaps, in order, and never cut a character.
struct StyledText {
    std::string string;
    std::vector<TextRun> runs;
    ParagraphStyle paragraph;

    static StyledText plain(std::string_view text, const TextAttributes& attributes);
    /// Joins a run with the one before it where the attributes are the same. An empty text changes
    /// nothing.
    void append(std::string_view text, const TextAttributes& attributes);
    void setColor(const Color& color);  // over its whole length
    /// The first character's; none where it has none or there is no character.
    std::optional<Color> firstColor() const;
    bool isEmpty() const { return string.empty(); }
    bool operator==(const StyledText&) const = default;
};

}  // namespace tavrolin::platform
