#pragma once

#include "tavrolin/platform/typesetter.h"

namespace tavrolin::adapters::memory {

/// A text that the memory typesetter set; what its canvas draws.
class MemoryTextLayout final : public platform::TextLayout {
public:
    struct Line {
        std::string text;
        double width = 0;
        double x = 0;  // by the alignment, from the left edge of the frame
    };

    MemoryTextLayout(std::vector<Line> lines, double lineHeight, bool isTruncated);

    const std::vector<Line>& lines() const { return lines_; }

    platform::Size size() const override { return size_; }
    platform::Rect inkBounds() const override;
    int lineCount() const override { return static_cast<int>(lines_.size()); }
    bool isTruncated() const override { return isTruncated_; }
    double firstBaseline() const override { return lineHeight_ * 0.8; }
    double lastBaseline() const override { return size_.height - lineHeight_ * 0.2; }

private:
    std::vector<Line> lines_;
    double lineHeight_;
    bool isTruncated_;
    platform::Size size_;
};

/// A typesetter whose results are the same everywhere: each code point is half as wide as the font
/// is large, lines are 1.2 times as high. Lines break at blanks, and within a word that is wider
/// than a line; a text that is cut short ends with an ellipsis. The largest font of a text counts
/// for all of it. All fonts have all characters but the private ones.
class MemoryTypesetter final : public platform::Typesetter {
public:
    std::unique_ptr<platform::TextLayout> layout(const platform::StyledText& text,
                                                 const platform::TextFrame& frame) override;
    double lineHeight(const platform::Font& font) override;
    std::vector<std::pair<char32_t, char32_t>> charactersOfFont(std::string_view name) override;
};

}  // namespace tavrolin::adapters::memory
