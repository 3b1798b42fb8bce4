#pragma once

#include <optional>
#include <vector>

#include "adapters/pango/fonts.h"
#include "adapters/pango/handles.h"
#include "adapters/pango/prepared_text.h"
#include "tavrolin/platform/typesetter.h"

namespace tavrolin::adapters::pango {

/// A text that was set. Keeps its fonts alive by itself.
class SetText : public platform::TextLayout {
public:
    SetText(Fonts& fonts, const platform::StyledText& text, const platform::TextFrame& frame);

    platform::Size size() const override { return size_; }
    platform::Rect inkBounds() const override;
    int lineCount() const override { return static_cast<int>(lines_.size()); }
    bool isTruncated() const override { return isTruncated_; }
    double firstBaseline() const override { return lines_.front().baseline; }
    double lastBaseline() const override { return lines_.back().baseline; }

    enum class Emoji { glyphs, pictures };
    /// The frame's corner is at the origin; what has no colour of its own is drawn in the present
    /// one. Targets that know no glyphs in colour get them as pictures.
    void draw(cairo_t* cairo, Emoji emoji) const;

private:
    struct Line {
        PangoLayoutLine* line = nullptr;  // its layout's
        double x = 0;
        double baseline = 0;
        double width = 0;
    };

    PangoLayout* addLayout(Fonts& fonts, const PreparedText& text);
    void takeLines(PangoLayout* layout, std::size_t most);
    void setFirstLine(Fonts& fonts, const PreparedText& text);
    void setLines(Fonts& fonts, const PreparedText& text, std::size_t limit);
    void setLastLine(Fonts& fonts, const PreparedText& text, PangoLayoutLine* line);
    void align(const platform::TextFrame& frame);
    void drawEmoji(cairo_t* cairo, const Line& line) const;

    platform::TextFrame frame_;
    int width_ = -1;  // in Pango's units; -1: unlimited
    std::vector<ObjectHandle<PangoLayout>> layouts_;
    std::vector<Line> lines_;
    platform::Size size_;
    mutable std::optional<platform::Rect> inkBounds_;
    bool isTruncated_ = false;
    bool isClipped_ = false;
};

}  // namespace tavrolin::adapters::pango
