#pragma once

#include <memory>
#include <utility>

#include "adapters/pango/set_text.h"

namespace tavrolin::adapters::pango {

/// What the typesetter hands out: a layout that it may hand out again.
class SharedText : public platform::TextLayout {
public:
    explicit SharedText(std::shared_ptr<const SetText> text) : text_(std::move(text)) {}

    platform::Size size() const override { return text_->size(); }
    platform::Rect inkBounds() const override { return text_->inkBounds(); }
    int lineCount() const override { return text_->lineCount(); }
    bool isTruncated() const override { return text_->isTruncated(); }
    double firstBaseline() const override { return text_->firstBaseline(); }
    double lastBaseline() const override { return text_->lastBaseline(); }

    const SetText& text() const { return *text_; }

private:
    std::shared_ptr<const SetText> text_;
};

}  // namespace tavrolin::adapters::pango
