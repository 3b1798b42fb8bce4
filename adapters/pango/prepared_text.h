#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tavrolin/platform/styled_text.h"

namespace tavrolin::adapters::pango {

/// How much of a text is set at most.
struct TextLimits {
    std::size_t characters = 0;
    std::size_t lines = 0;             // paragraphs, that is
    std::size_t charactersInLine = 0;  // of a paragraph, that is
    /// Where the text is shortened: at its head and in its middle for the modes that truncate
    /// there, otherwise at its end.
    platform::LineBreakMode mode = platform::LineBreakMode::wordWrapping;
};

/// A text that is safe to set: valid UTF-8 whose only control characters are tab and "\n", which
/// ends every paragraph but the last.
struct PreparedText {
    std::string string;
    std::vector<platform::TextRun> runs;  // cover it
    bool isShortened = false;

    PreparedText substring(std::size_t begin, std::size_t end) const;
    /// With the attributes of the last run.
    void append(std::string_view text);
};

PreparedText prepared(const platform::StyledText& text, const TextLimits& limits);

}  // namespace tavrolin::adapters::pango
