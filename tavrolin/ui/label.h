#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tavrolin/platform/styled_text.h"
#include "tavrolin/platform/typesetter.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// Shows a text. Where it is narrower than the text, lines break at words; what goes beyond the
/// limit of lines, or beyond the label's height, ends as the line-break mode says.
///
/// Plain text in tabular figures takes the same room whatever its digits are, so that a countdown
/// stands still and costs no layout.
///
/// Styled text wins over plain text; setting one clears the other. Properties of interface files:
/// text, fontSize, bold, tabularFigures, textColor, alignment, numberOfLines, lineBreakMode.
class Label : public View {
public:
    Label();
    std::string_view className() const override { return "Label"; }

    /// Plain text in the label's font and colour; what is shown as plain text of either kind.
    const std::string& text() const;
    void setText(std::string_view text);
    const std::optional<platform::StyledText>& attributedText() const { return attributedText_; }
    void setAttributedText(std::optional<platform::StyledText> text);

    const platform::Font& font() const { return font_; }
    void setFont(const platform::Font& font);
    const DynamicColor& textColor() const { return textColor_; }
    void setTextColor(const DynamicColor& color);
    platform::TextAlignment textAlignment() const { return alignment_; }
    void setTextAlignment(platform::TextAlignment alignment);
    int numberOfLines() const { return numberOfLines_; }  // 0: any number
    void setNumberOfLines(int lines);
    platform::LineBreakMode lineBreakMode() const { return lineBreakMode_; }
    void setLineBreakMode(platform::LineBreakMode mode);

    platform::Size intrinsicContentSize(double availableWidth) const override;
    bool setProperty(std::string_view name, const foundation::Value& value) override;
    void describe(foundation::Value& dictionary) const override;

protected:
    void drawContent(platform::Canvas& canvas) const override;
    platform::Rect contentExtent() const override;

private:
    friend class Button;
    using LayoutRef = std::shared_ptr<const platform::TextLayout>;

    /// Null when there is no typesetter.
    LayoutRef layoutFor(platform::Size size) const;
    LayoutRef layoutWithin(double width) const;
    std::optional<double> beginOfLine(double room) const;
    std::optional<double> beginOfNaturalLine(double width) const;
    LayoutRef set(double width, int lines) const;
    LayoutRef setPlain(std::string_view text, double width, int lines) const;
    LayoutRef set(const platform::StyledText& text, double width, int lines) const;
    bool isInTabularFigures() const { return font_.tabularFigures && !attributedText_; }
    const platform::Size& naturalSize() const;
    bool startsRightToLeft() const;
    platform::Point textOrigin(const platform::TextLayout& layout,
                               const platform::Rect& rect) const;
    platform::Rect textExtent(const platform::Rect& rect) const;
    void drawText(platform::Canvas& canvas, const platform::Rect& rect,
                  const platform::Color& color) const;
    void changed();
    void forgetSetTexts();

    std::string text_;
    std::optional<platform::StyledText> attributedText_;
    platform::Font font_;
    DynamicColor textColor_ = palette::label;
    platform::TextAlignment alignment_ = platform::TextAlignment::natural;
    int numberOfLines_ = 1;
    platform::LineBreakMode lineBreakMode_ = platform::LineBreakMode::truncatingTail;
    // What was last set.
    struct Set {
        double width = 0;
        int lines = 0;
        LayoutRef layout;
    };
    mutable std::optional<platform::Size> naturalSize_;
    mutable Set natural_;   // on unlimited width
    mutable Set measured_;  // for the width that it was last measured for
    mutable Set drawn_;     // what fits `drawnSize_`
    mutable platform::Size drawnSize_;
    mutable double drawnX_ = 0;
};

}  // namespace tavrolin::ui
