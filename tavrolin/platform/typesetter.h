#pragma once

#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "tavrolin/platform/geometry.h"
#include "tavrolin/platform/styled_text.h"

namespace tavrolin::platform {

inline constexpr double kUnlimitedWidth = std::numeric_limits<double>::max();

/// What a text is set into.
struct TextFrame {
    double width = kUnlimitedWidth;  // in points; a negative one counts as 0
    int lineLimit = 0;               // 0: any number
    /// What becomes of a text that does not fit a limit of lines: the modes that wrap words or
    /// truncate put an ellipsis into the last line, the others cut it off.
    LineBreakMode lineBreakMode = LineBreakMode::wordWrapping;
    TextAlignment alignment = TextAlignment::natural;
};

/// A text that was set: broken into lines, shaped and measured. Immutable; may be drawn any number
/// of times, by the canvases of the typesetter's own technology. One thread at a time.
class TextLayout {
public:
    virtual ~TextLayout() = default;

    /// The bounding rectangle's, line gaps included; as wide as its widest line. An empty text has
    /// the height of a line and no width.
    virtual Size size() const = 0;
    /// What is drawn of it lies within, counted from the frame's upper left corner.
    virtual Rect inkBounds() const = 0;
    virtual int lineCount() const = 0;
    virtual bool isTruncated() const = 0;
    /// From the top to the baseline of the first and of the last line.
    virtual double firstBaseline() const = 0;
    virtual double lastBaseline() const = 0;
};

/// Sets and measures text in the system's fonts. Results don't depend on what was set before. Bad
/// UTF-8 is repaired, control characters take no room, and of a text that is longer than any screen
/// only as much is set as can be seen; nothing raises. Main thread.
class Typesetter {
public:
    virtual ~Typesetter() = default;

    virtual std::unique_ptr<TextLayout> layout(const StyledText& text, const TextFrame& frame) = 0;
    /// Distance between two baselines of the font.
    virtual double lineHeight(const Font& font) = 0;
    /// The characters that a font of this name has glyphs for, as ranges of code points (first and
    /// last, both included) in ascending order. "AppleColorEmoji" is the system's emoji font
    /// whatever it is called here. Empty when there is no such font.
    virtual std::vector<std::pair<char32_t, char32_t>> charactersOfFont(std::string_view name) = 0;
};

}  // namespace tavrolin::platform
