#include "tavrolin/ui/label.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/drawing.h"
#include "tavrolin/ui/property_values.h"
#include "tavrolin/ui/text_direction.h"
#include "tavrolin/ui/value_text.h"

namespace tavrolin::ui {

using platform::LineBreakMode;
using platform::Size;
using platform::StyledText;
using platform::TextAlignment;

namespace {

// What a label that fits may be lower than its text, since frames lie on the pixel grid.
constexpr double kRoundingSlack = 0.51;

// Of letters that run from left to right alone, and of none.
bool isLatin(std::string_view text) {
    return std::ranges::all_of(text,
                               [](char byte) { return static_cast<unsigned char>(byte) < 0xD6; });
}

bool hasLineBreaks(std::string_view text) {
    return text.find_first_of("\n\r") != std::string_view::npos ||
           text.find("\u2028") != std::string_view::npos ||
           text.find("\u2029") != std::string_view::npos;
}

std::string withZeros(std::string_view text) {
    std::string zeros(text);
    std::ranges::replace_if(
        zeros, [](char byte) { return byte >= '0' && byte <= '9'; }, '0');
    return zeros;
}

}  // namespace

Label::Label() {
    setUserInteractionEnabled(false);
}

const std::string& Label::text() const {
    return attributedText_ ? attributedText_->string : text_;
}

void Label::setText(std::string_view text) {
    if (!attributedText_ && text == text_) return;
    const bool keepsItsSize = isInTabularFigures() && withZeros(text) == withZeros(text_);
    attributedText_.reset();
    text_ = text;
    if (!keepsItsSize) return changed();
    forgetSetTexts();
}

void Label::setAttributedText(std::optional<StyledText> text) {
    if (text && attributedText_ == text) return;
    attributedText_ = std::move(text);
    text_.clear();
    changed();
}

void Label::setFont(const platform::Font& font) {
    if (font == font_) return;
    font_ = font;
    changed();
}

void Label::setTextColor(const DynamicColor& color) {
    textColor_ = color;  // texts are set without colours of their own
    setNeedsDisplay();
}

void Label::setTextAlignment(TextAlignment alignment) {
    if (alignment == alignment_) return;
    alignment_ = alignment;
    changed();
}

void Label::setNumberOfLines(int lines) {
    if (lines == numberOfLines_) return;
    numberOfLines_ = std::max(0, lines);
    changed();
}

void Label::setLineBreakMode(LineBreakMode mode) {
    if (mode == lineBreakMode_) return;
    lineBreakMode_ = mode;
    changed();
}

void Label::changed() {
    naturalSize_.reset();
    forgetSetTexts();
    invalidateIntrinsicContentSize();
}

void Label::forgetSetTexts() {
    natural_ = measured_ = drawn_ = Set();
    setNeedsDisplay();
}

// --- Measuring

Label::LayoutRef Label::set(double width, int lines) const {
    if (!attributedText_ || attributedText_->string.empty()) return setPlain(text_, width, lines);
    return set(*attributedText_, width, lines);
}

Label::LayoutRef Label::setPlain(std::string_view text, double width, int lines) const {
    return set(StyledText::plain(text, {.font = font_}), width, lines);
}

Label::LayoutRef Label::set(const StyledText& text, double width, int lines) const {
    platform::Typesetter* typesetter = platform::current().drawing.typesetter;
    if (typesetter == nullptr) return nullptr;
    const auto [alignment, mode] =
        attributedText_ ? attributedText_->paragraph : platform::ParagraphStyle();
    return typesetter->layout(text, {.width = width,
                                     .lineLimit = lines,
                                     .lineBreakMode = mode.value_or(lineBreakMode_),
                                     .alignment = alignment.value_or(alignment_)});
}

const Size& Label::naturalSize() const {
    if (naturalSize_) return *naturalSize_;
    LayoutRef measured;
    if (isInTabularFigures()) {
        measured = setPlain(withZeros(text_), platform::kUnlimitedWidth, numberOfLines_);
    } else if (!text().empty()) {
        measured = natural_.layout = set(platform::kUnlimitedWidth, numberOfLines_);
    }
    naturalSize_ = measured == nullptr ? Size() : measured->size();
    return *naturalSize_;
}

// A text that is known to be too long need not be set in one line as well: that takes as long as
// setting it once more.
Size Label::intrinsicContentSize(double availableWidth) const {
    if (text().empty()) return {};
    const bool isUnlimited = availableWidth >= platform::kUnlimitedWidth;
    if (isUnlimited || naturalSize_ || isInTabularFigures() || hasLineBreaks(text())) {
        const Size& natural = naturalSize();
        if (availableWidth >= natural.width || numberOfLines_ == 1) return natural;
    }
    const LayoutRef layout = layoutWithin(availableWidth);
    if (layout == nullptr) return {};
    const bool fits = layout->lineCount() <= 1 && !layout->isTruncated();
    if (fits) naturalSize_ = layout->size();
    return fits ? layout->size() : Size{availableWidth + 1, layout->size().height};
}

Label::LayoutRef Label::layoutWithin(double width) const {
    if (measured_.layout == nullptr || measured_.width != width) {
        measured_ = {width, numberOfLines_, set(width, numberOfLines_)};
    }
    return measured_.layout;
}

// Where a line begins that was set without a width, nothing where that is not known.
std::optional<double> Label::beginOfLine(double room) const {
    TextAlignment alignment = alignment_;
    if (attributedText_) alignment = attributedText_->paragraph.alignment.value_or(alignment_);
    switch (alignment) {
        case TextAlignment::left:
            return 0;
        case TextAlignment::center:
            return room / 2;
        case TextAlignment::right:
            return room;
        case TextAlignment::justified:
        case TextAlignment::natural:
            break;
    }
    if (isLatin(text())) return 0;
    return std::nullopt;
}

std::optional<double> Label::beginOfNaturalLine(double width) const {
    if (natural_.layout == nullptr || natural_.layout->lineCount() > 1) return std::nullopt;
    const double room = width - naturalSize_->width;
    if (room < 0) return std::nullopt;
    return room < 1 ? 0 : beginOfLine(room);
}

// As many lines as there is room for, at least one.
Label::LayoutRef Label::layoutFor(Size size) const {
    if (drawn_.layout != nullptr && drawnSize_ == size) return drawn_.layout;
    drawnSize_ = size;
    drawnX_ = 0;
    const auto layOut = [&](int lines) {
        drawn_ = {size.width, lines, set(size.width, lines)};
        return drawn_.layout != nullptr;
    };
    if (measured_.layout != nullptr && measured_.width == size.width) {
        drawn_ = measured_;
    } else if (const auto x = beginOfNaturalLine(size.width)) {
        drawn_ = {size.width, numberOfLines_, natural_.layout};
        drawnX_ = *x;
    } else if (!layOut(numberOfLines_)) {
        return nullptr;
    }
    const double height = drawn_.layout->size().height;
    const int count = drawn_.layout->lineCount();
    if (count <= 1 || height <= size.height + kRoundingSlack) return drawn_.layout;
    int lines =
        static_cast<int>(std::clamp(std::floor((size.height + kRoundingSlack) / (height / count)),
                                    1.0, static_cast<double>(count - 1)));
    while (layOut(lines) && lines > 1 &&
           drawn_.layout->size().height > size.height + kRoundingSlack) {
        lines -= lines > 8 ? lines / 8 : 1;
    }
    return drawn_.layout;
}

bool Label::startsRightToLeft() const {
    const TextDirection direction = directionOf(text());
    if (direction != TextDirection::none) return direction == TextDirection::rightToLeft;
    return effectiveLayoutDirection() == LayoutDirection::rightToLeft;
}

// --- Looks

void Label::drawContent(platform::Canvas& canvas) const {
    drawText(canvas, bounds(), resolved(textColor_));
}

platform::Rect Label::contentExtent() const {
    return textExtent(bounds());
}

platform::Rect Label::textExtent(const platform::Rect& rect) const {
    if (text().empty() || rect.isEmpty()) return {};
    const LayoutRef layout = layoutFor(rect.size());
    if (layout == nullptr) return {};
    const platform::Point origin = textOrigin(*layout, rect);
    return layout->inkBounds().movedBy(origin.x, origin.y);
}

// Of what `layoutFor` gave for that rectangle: texts stand in the middle.
platform::Point Label::textOrigin(const platform::TextLayout& layout,
                                  const platform::Rect& rect) const {
    const double rest = rect.height - layout.size().height;
    return {rect.x + drawnX_, rect.y + (rest > kRoundingSlack ? rest / 2 : 0)};
}

void Label::drawText(platform::Canvas& canvas, const platform::Rect& rect,
                     const platform::Color& color) const {
    if (text().empty() || rect.isEmpty()) return;
    const LayoutRef layout = layoutFor(rect.size());
    if (layout == nullptr) return;
    if (auto* drawing = dynamic_cast<Drawing*>(&canvas)) drawing->keep(layout);
    canvas.drawText(*layout, textOrigin(*layout, rect), color);
}

bool Label::setProperty(std::string_view name, const foundation::Value& value) {
    using namespace property;
    if (name == "text") {
        setText(property::text(value));
    } else if (name == "fontSize") {
        platform::Font font = font_;
        font.size = length(value);
        setFont(font);
    } else if (name == "bold") {
        platform::Font font = font_;
        font.bold = boolean(value);
        setFont(font);
    } else if (name == "tabularFigures") {
        platform::Font font = font_;
        font.tabularFigures = boolean(value);
        setFont(font);
    } else if (name == "textColor") {
        setTextColor(color(value));
    } else if (name == "alignment") {
        setTextAlignment(oneOf<TextAlignment>(value, {{"left", TextAlignment::left},
                                                      {"center", TextAlignment::center},
                                                      {"right", TextAlignment::right},
                                                      {"justified", TextAlignment::justified},
                                                      {"natural", TextAlignment::natural}}));
    } else if (name == "numberOfLines") {
        const std::int64_t lines = integer(value);
        setNumberOfLines(static_cast<int>(std::clamp<std::int64_t>(lines, 0, 10'000)));
    } else if (name == "lineBreakMode") {
        setLineBreakMode(
            oneOf<LineBreakMode>(value, {{"wordWrapping", LineBreakMode::wordWrapping},
                                         {"charWrapping", LineBreakMode::charWrapping},
                                         {"clipping", LineBreakMode::clipping},
                                         {"truncatingHead", LineBreakMode::truncatingHead},
                                         {"truncatingTail", LineBreakMode::truncatingTail},
                                         {"truncatingMiddle", LineBreakMode::truncatingMiddle}}));
    } else {
        return View::setProperty(name, value);
    }
    return true;
}

void Label::describe(foundation::Value& dictionary) const {
    View::describe(dictionary);
    const LayoutRef layout =
        text().empty() || bounds().isEmpty() ? nullptr : layoutFor(bounds().size());
    TextAlignment alignment = alignment_;
    if (attributedText_ && attributedText_->paragraph.alignment) {
        alignment = *attributedText_->paragraph.alignment;
    }
    if (alignment == TextAlignment::natural || alignment == TextAlignment::justified) {
        alignment = startsRightToLeft() ? TextAlignment::right : TextAlignment::left;
    }
    dictionary.set("text", text());
    dictionary.set("lines", layout == nullptr ? 0 : layout->lineCount());
    dictionary.set("alignment", alignment == TextAlignment::left    ? "left"
                                : alignment == TextAlignment::right ? "right"
                                                                    : "center");
    const auto styled = attributedText_ ? attributedText_->firstColor() : std::nullopt;
    dictionary.set("textColor", hexText(styled.value_or(resolved(textColor_))));
}

}  // namespace tavrolin::ui
