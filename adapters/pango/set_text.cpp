#include "adapters/pango/set_text.h"

#include <pango/pangocairo.h>
#include <pango/pangofc-font.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

namespace tavrolin::adapters::pango {

using platform::Font;
using platform::LineBreakMode;
using platform::Script;
using platform::StyledText;
using platform::TextAlignment;
using platform::TextAttributes;
using platform::TextFrame;
using platform::TextRun;

namespace {

// No screen shows more. A text that is longer is shortened before it is set.
constexpr std::size_t kMaximumCharacters = 5000;
constexpr std::size_t kMaximumLines = 200;
constexpr std::size_t kMaximumCharactersInLine = 1000;
constexpr std::size_t kMinimumCharactersInLine = 8;
constexpr std::size_t kLongestWord = 64;
// A narrow letter is a fifth of the font's size; marks and joiners that take no room come on top.
constexpr double kNarrowestCharacter = 0.05;

constexpr double kMaximumWidth = 100'000;
constexpr double kMinimumFontSize = 1;
constexpr double kMaximumFontSize = 1000;

constexpr double kScriptSize = 0.7;
constexpr double kSuperscriptRise = 0.35;
constexpr double kSubscriptRise = -0.15;

// How much finer than a point the pictures of emoji are.
constexpr double kEmojiPictureScale = 4;

// Of the font's size, from the baseline.
constexpr double kMostAbove = 1.1;
constexpr double kMostBelow = 0.45;

constexpr std::string_view kEllipsis = "\u2026";

double points(int units) {
    return static_cast<double>(units) / PANGO_SCALE;
}
int units(double points) {
    return static_cast<int>(std::lround(points * PANGO_SCALE));
}

double sizeOf(const Font& font) {
    return font.size >= kMinimumFontSize ? std::min(font.size, kMaximumFontSize) : kMinimumFontSize;
}

DescriptionHandle describe(const Font& font, double size) {
    DescriptionHandle description(pango_font_description_new());
    pango_font_description_set_family_static(
        description.get(), font.monospaced ? Fonts::kMonospacedFamily : Fonts::kFamily);
    pango_font_description_set_absolute_size(description.get(), size * PANGO_SCALE);
    // Whatever is not said comes from the text's beginning.
    pango_font_description_set_weight(description.get(),
                                      font.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(description.get(),
                                     font.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    return description;
}

guint16 component(double value) {
    return static_cast<guint16>(std::lround(std::clamp(value, 0.0, 1.0) * 65535));
}

class AttributeList {
public:
    AttributeList() : list_(pango_attr_list_new()) {}

    /// The stretch has no more than one font, and no character in it is cut.
    void add(std::size_t begin, std::size_t end, const TextAttributes& attributes) {
        begin_ = static_cast<guint>(begin);
        end_ = static_cast<guint>(end);
        const double size = sizeOf(attributes.font);
        const bool isScript = attributes.script != Script::normal;
        const DescriptionHandle font =
            describe(attributes.font, isScript ? size * kScriptSize : size);
        insert(pango_attr_font_desc_new(font.get()));
        if (isScript) {
            const double rise =
                attributes.script == Script::superscript ? kSuperscriptRise : kSubscriptRise;
            insert(pango_attr_rise_new(units(size * rise)));
        }
        if (attributes.color) {
            const platform::Color& color = *attributes.color;
            insert(pango_attr_foreground_new(component(color.red), component(color.green),
                                             component(color.blue)));
            insert(pango_attr_foreground_alpha_new(alpha(color)));
        }
        if (attributes.backgroundColor) {
            const platform::Color& color = *attributes.backgroundColor;
            insert(pango_attr_background_new(component(color.red), component(color.green),
                                             component(color.blue)));
            insert(pango_attr_background_alpha_new(alpha(color)));
        }
        if (attributes.font.tabularFigures) insert(pango_attr_font_features_new("tnum=1,kern=0"));
        insert(pango_attr_insert_hyphens_new(FALSE));
        if (attributes.underline) insert(pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
        if (attributes.strikethrough) insert(pango_attr_strikethrough_new(TRUE));
    }
    PangoAttrList* get() const { return list_.get(); }

private:
    // Of 0, Pango makes opaque.
    static guint16 alpha(const platform::Color& color) {
        return std::max<guint16>(component(color.alpha), 1);
    }
    void insert(PangoAttribute* attribute) {
        attribute->start_index = begin_;
        attribute->end_index = end_;
        pango_attr_list_insert(list_.get(), attribute);
    }

    AttributesHandle list_;
    guint begin_ = 0;
    guint end_ = 0;
};

PangoEllipsizeMode ellipsizing(LineBreakMode mode) {
    switch (mode) {
        case LineBreakMode::truncatingHead:
            return PANGO_ELLIPSIZE_START;
        case LineBreakMode::truncatingMiddle:
            return PANGO_ELLIPSIZE_MIDDLE;
        case LineBreakMode::wordWrapping:
        case LineBreakMode::truncatingTail:
            return PANGO_ELLIPSIZE_END;
        default:
            return PANGO_ELLIPSIZE_NONE;
    }
}

double smallestSize(const StyledText& text) {
    double size = text.runs.empty() ? sizeOf({}) : kMaximumFontSize;
    for (const TextRun& run : text.runs)
        size = std::min(size, sizeOf(run.attributes.font));
    return size;
}

TextLimits limitsFor(const StyledText& text, const TextFrame& frame) {
    TextLimits limits;
    limits.mode = frame.lineBreakMode;
    limits.lines = kMaximumLines;
    if (frame.lineLimit > 0) {
        limits.lines = std::min(limits.lines, static_cast<std::size_t>(frame.lineLimit));
    } else {
        limits.mode = LineBreakMode::wordWrapping;
    }
    std::size_t inLine = limits.charactersInLine = kMaximumCharactersInLine;
    if (frame.width < kMaximumWidth) {
        const double most = frame.width / (smallestSize(text) * kNarrowestCharacter);
        inLine =
            static_cast<std::size_t>(std::clamp(most, static_cast<double>(kMinimumCharactersInLine),
                                                static_cast<double>(kMaximumCharactersInLine)));
        limits.charactersInLine = kMaximumCharacters;  // they go on in the next line
    }
    limits.characters = std::min(kMaximumCharacters, inLine * limits.lines);
    // One more, so that there is something to leave out.
    ++limits.lines;
    return limits;
}

bool isColored(const PangoGlyphItem& run) {
    PangoFont* font = run.item->analysis.font;
    FcBool isColored = FcFalse;
    return PANGO_IS_FC_FONT(font) &&
           FcPatternGetBool(pango_fc_font_get_pattern(PANGO_FC_FONT(font)), FC_COLOR, 0,
                            &isColored) == FcResultMatch &&
           isColored == FcTrue;
}

template <class Visit>
void forEachRun(PangoLayoutLine* line, Visit visit) {
    for (const GSList* node = line->runs; node != nullptr; node = node->next)
        visit(*static_cast<PangoGlyphItem*>(node->data));
}

struct Extents {
    int above = 0;  // the baseline
    int below = 0;
    int width = 0;
};

// The fonts of some scripts have twice their size between their lines, for marks that stand above
// one another; that room is kept where such marks are.
Extents extentsOf(PangoLayoutLine* line) {
    PangoRectangle logical{};
    pango_layout_line_get_extents(line, nullptr, &logical);
    Extents extents = {-logical.y, logical.y + logical.height, logical.width};
    int size = 0;
    forEachRun(line, [&](const PangoGlyphItem& run) {
        const DescriptionHandle font(
            pango_font_describe_with_absolute_size(run.item->analysis.font));
        size = std::max(size, pango_font_description_get_size(font.get()));
    });
    const int above = static_cast<int>(size * kMostAbove);
    const int below = static_cast<int>(size * kMostBelow);
    if (size == 0 || (extents.above <= above && extents.below <= below)) return extents;
    PangoRectangle ink{};
    pango_layout_line_get_extents(line, &ink, nullptr);
    extents.above = std::min(extents.above, std::max(above, -ink.y));
    extents.below = std::min(extents.below, std::max(below, ink.y + ink.height));
    return extents;
}

std::size_t endOfParagraph(const std::string& text, std::size_t offset) {
    return std::min(text.find('\n', offset), text.size());
}

// Up to where, at most to `end`, a text is shaped at once. A word without an end is cut up: each
// line of it would otherwise cost the shaping of all that follows.
std::size_t endOfStretch(const std::string& text, std::size_t begin, std::size_t end) {
    std::size_t wordLength = 0;
    for (std::size_t at = begin; at < end;) {
        const gunichar character = g_utf8_get_char(text.data() + at);
        const bool goesOn = g_unichar_ismark(character) || character == 0x200D;
        if (wordLength >= kLongestWord && !goesOn) return at;
        wordLength = character == ' ' || character == '\n' ? 0 : wordLength + 1;
        at = std::min(end,
                      static_cast<std::size_t>(g_utf8_next_char(text.data() + at) - text.data()));
    }
    return end;
}

bool isRightToLeft(const PangoLayoutLine* line) {
    return line->resolved_dir == PANGO_DIRECTION_RTL;
}

}  // namespace

SetText::SetText(Fonts& fonts, const StyledText& text, const TextFrame& frame) : frame_(frame) {
    frame_.width = frame.width > 0 ? frame.width : 0;
    frame_.lineBreakMode = text.paragraph.lineBreakMode.value_or(frame.lineBreakMode);
    frame_.alignment = text.paragraph.alignment.value_or(frame.alignment);
    if (frame_.width < kMaximumWidth) width_ = units(frame_.width);
    const PreparedText whole = prepared(text, limitsFor(text, frame_));
    isTruncated_ = whole.isShortened;

    const bool isOneLine = frame_.lineLimit == 1 && whole.string.find('\n') == std::string::npos;
    const bool breaksLines = frame_.lineBreakMode == LineBreakMode::wordWrapping ||
                             frame_.lineBreakMode == LineBreakMode::charWrapping;
    if (isOneLine && !breaksLines) {
        setFirstLine(fonts, whole);
    } else {
        const bool isLimited = frame_.lineLimit > 0;
        setLines(fonts, whole,
                 isLimited ? std::min(static_cast<std::size_t>(frame_.lineLimit), kMaximumLines)
                           : kMaximumLines);
    }
    align(frame_);
}

PangoLayout* SetText::addLayout(Fonts& fonts, const PreparedText& text) {
    PangoLayout* layout =
        layouts_.emplace_back(pango_layout_new(fonts.contextFor(text.string))).get();
    const Font first = text.runs.empty() ? Font{} : text.runs.front().attributes.font;
    pango_layout_set_font_description(layout, describe(first, sizeOf(first)).get());
    pango_layout_set_wrap(layout, frame_.lineBreakMode == LineBreakMode::charWrapping
                                      ? PANGO_WRAP_CHAR
                                      : PANGO_WRAP_WORD_CHAR);
    pango_layout_set_justify(layout, frame_.alignment == TextAlignment::justified);
    pango_layout_set_text(layout, text.string.data(), static_cast<int>(text.string.size()));
    AttributeList attributes;
    std::size_t offset = 0;
    for (const TextRun& run : text.runs) {
        const std::size_t end = offset + run.length;
        while (offset < end) {
            const std::size_t next = endOfStretch(text.string, offset, end);
            attributes.add(offset, next, run.attributes);
            offset = next;
        }
    }
    pango_layout_set_attributes(layout, attributes.get());
    return layout;
}

// The first lines of the layout, below those that are there.
void SetText::takeLines(PangoLayout* layout, std::size_t most) {
    const GSList* node = pango_layout_get_lines(layout);
    for (; node != nullptr && most > 0; node = node->next, --most) {
        auto* line = static_cast<PangoLayoutLine*>(node->data);
        const Extents extents = extentsOf(line);
        lines_.push_back({line, 0, size_.height + points(extents.above), points(extents.width)});
        size_.height += points(extents.above + extents.below);
        size_.width = std::max(size_.width, points(extents.width));
    }
}

// The only line, which is not broken but truncated or clipped.
void SetText::setFirstLine(Fonts& fonts, const PreparedText& text) {
    PangoLayout* layout = addLayout(fonts, text);
    const PangoEllipsizeMode mode = ellipsizing(frame_.lineBreakMode);
    if (mode != PANGO_ELLIPSIZE_NONE) {
        pango_layout_set_width(layout, width_);
        pango_layout_set_ellipsize(layout, mode);
    }
    takeLines(layout, 1);
    isTruncated_ = isTruncated_ || pango_layout_is_ellipsized(layout) != FALSE;
    isClipped_ = mode == PANGO_ELLIPSIZE_NONE && units(size_.width) > width_ && width_ >= 0;
    if (!isClipped_) return;
    isTruncated_ = true;
    size_.width = frame_.width;
}

void SetText::setLines(Fonts& fonts, const PreparedText& text, std::size_t limit) {
    PangoLayout* layout = addLayout(fonts, text);
    pango_layout_set_width(layout, width_);
    const auto count = static_cast<std::size_t>(pango_layout_get_line_count(layout));
    if (count <= limit) {
        takeLines(layout, limit);
        return;
    }
    isTruncated_ = true;
    const bool isEllipsized =
        frame_.lineLimit > 0 && ellipsizing(frame_.lineBreakMode) != PANGO_ELLIPSIZE_NONE;
    takeLines(layout, isEllipsized ? limit - 1 : limit);
    if (isEllipsized)
        setLastLine(fonts, text, pango_layout_get_line(layout, static_cast<int>(limit) - 1));
}

// Pango limits the lines of each paragraph, not of the text, so the last line is set by itself: of
// all that is left from where the line begins.
void SetText::setLastLine(Fonts& fonts, const PreparedText& text, PangoLayoutLine* line) {
    const auto begin = static_cast<std::size_t>(line->start_index);
    const std::size_t end = endOfParagraph(text.string, begin);
    PreparedText rest;
    if (ellipsizing(frame_.lineBreakMode) == PANGO_ELLIPSIZE_END) {
        rest = text.substring(begin, end);
        const bool isLastOfParagraph =
            static_cast<std::size_t>(line->start_index) + static_cast<std::size_t>(line->length) >=
            end;
        if (isLastOfParagraph) rest.append(kEllipsis);
    } else {
        rest = text.substring(begin, text.string.size());
        std::ranges::replace(rest.string, '\n', ' ');
    }
    if (!rest.runs.empty()) {
        // The paragraph's direction goes on.
        const std::string_view mark = isRightToLeft(line) ? "\u200F" : "\u200E";
        rest.string.insert(0, mark);
        rest.runs.front().length += mark.size();
    }
    PangoLayout* layout = addLayout(fonts, rest);
    pango_layout_set_width(layout, width_);
    pango_layout_set_ellipsize(layout, ellipsizing(frame_.lineBreakMode));
    takeLines(layout, 1);
}

void SetText::align(const TextFrame& frame) {
    const double width = width_ < 0 ? size_.width : frame.width;
    for (Line& line : lines_) {
        const double room = width - line.width;
        switch (frame.alignment) {
            case TextAlignment::left:
                line.x = 0;
                break;
            case TextAlignment::center:
                line.x = room / 2;
                break;
            case TextAlignment::right:
                line.x = room;
                break;
            case TextAlignment::justified:
            case TextAlignment::natural:
                line.x = isRightToLeft(line.line) ? room : 0;
                break;
        }
    }
}

platform::Rect SetText::inkBounds() const {
    if (inkBounds_) return *inkBounds_;
    platform::Rect all;
    for (const Line& line : lines_) {
        PangoRectangle ink{};
        PangoRectangle logical{};
        pango_layout_line_get_extents(line.line, &ink, &logical);
        // Backgrounds fill the line's own rectangle, underlines lie in either.
        for (const PangoRectangle& part : {ink, logical}) {
            all = all.united(platform::Rect{points(part.x), points(part.y), points(part.width),
                                            points(part.height)}
                                 .movedBy(line.x, line.baseline));
        }
    }
    if (isClipped_) all = all.intersection({0, all.y, frame_.width, all.height});
    inkBounds_ = all;
    return all;
}

void SetText::draw(cairo_t* cairo, Emoji emoji) const {
    cairo_save(cairo);
    if (isClipped_) {
        cairo_rectangle(cairo, 0, -size_.height, frame_.width, 3 * size_.height);
        cairo_clip(cairo);
    }
    for (const Line& line : lines_) {
        bool hasEmoji = false;
        if (emoji == Emoji::pictures)
            forEachRun(line.line, [&](auto& run) { hasEmoji = hasEmoji || isColored(run); });
        if (hasEmoji) {
            drawEmoji(cairo, line);
        } else {
            cairo_move_to(cairo, line.x, line.baseline);
            pango_cairo_show_layout_line(cairo, line.line);
        }
    }
    cairo_restore(cairo);
}

// Draws the line with room for its emoji, and then pictures of them.
void SetText::drawEmoji(cairo_t* cairo, const Line& line) const {
    std::vector<std::vector<PangoGlyph>> kept;
    forEachRun(line.line, [&](PangoGlyphItem& run) {
        if (!isColored(run)) return;
        auto& glyphs = kept.emplace_back();
        for (int i = 0; i < run.glyphs->num_glyphs; ++i)
            glyphs.push_back(std::exchange(run.glyphs->glyphs[i].glyph,
                                           static_cast<PangoGlyph>(PANGO_GLYPH_EMPTY)));
    });
    cairo_move_to(cairo, line.x, line.baseline);
    pango_cairo_show_layout_line(cairo, line.line);

    std::size_t next = 0;
    int x = 0;
    forEachRun(line.line, [&](PangoGlyphItem& run) {
        const int advance = pango_glyph_string_get_width(run.glyphs);
        if (isColored(run)) {
            const auto& glyphs = kept[next++];
            for (int i = 0; i < run.glyphs->num_glyphs; ++i)
                run.glyphs->glyphs[i].glyph = glyphs[static_cast<std::size_t>(i)];
            PangoRectangle ink{};
            pango_glyph_string_extents(run.glyphs, run.item->analysis.font, &ink, nullptr);
            const double left = std::floor(points(ink.x));
            const double top = std::floor(points(ink.y));
            const auto pixels = [](int extent) {
                return static_cast<int>(
                    std::min((std::ceil(points(extent)) + 1) * kEmojiPictureScale, 16384.0));
            };
            const SurfaceHandle surface(cairo_image_surface_create(
                CAIRO_FORMAT_ARGB32, pixels(ink.width), pixels(ink.height)));
            cairo_surface_set_device_scale(surface.get(), kEmojiPictureScale, kEmojiPictureScale);
            const CairoHandle picture(cairo_create(surface.get()));
            cairo_move_to(picture.get(), -left, -top);
            pango_cairo_show_glyph_string(picture.get(), run.item->analysis.font, run.glyphs);
            cairo_save(cairo);
            cairo_set_source_surface(cairo, surface.get(), line.x + points(x) + left,
                                     line.baseline - points(run.y_offset) + top);
            cairo_paint(cairo);
            cairo_restore(cairo);
        }
        x += advance;
    });
}

}  // namespace tavrolin::adapters::pango
