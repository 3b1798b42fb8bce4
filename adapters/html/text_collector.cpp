#include "adapters/html/text_collector.h"

#include <utility>

#include "adapters/html/characters.h"

namespace tavrolin::adapters::html {

void TextCollector::append(std::string_view text, const Attributes& attributes) {
    result_.append(text, attributes);
}

void TextCollector::beginText() {
    if (lineEndIsDue_) {
        append("\n", result_.runs.back().attributes);
        lineEndIsDue_ = false;
        lineIsOpen_ = false;
    }
    if (!marker_.empty()) {
        append(marker_, markerAttributes_);
        marker_.clear();
        lineIsOpen_ = true;
        blanksAreDropped_ = true;
        blankIsDue_ = false;
    }
}

void TextCollector::text(std::string_view text, const Attributes& attributes, WhiteSpace whiteSpace,
                         std::optional<platform::TextAlignment> alignment) {
    const std::size_t before = length();
    if (whiteSpace == WhiteSpace::collapsed) {
        collapsedText(text, attributes);
    } else if (whiteSpace == WhiteSpace::lineEndsKept) {
        for (std::size_t end = text.find('\n'); end != std::string_view::npos;
             end = text.find('\n')) {
            collapsedText(text.substr(0, end), attributes);
            lineBreak(attributes);
            text.remove_prefix(end + 1);
        }
        collapsedText(text, attributes);
    } else if (!text.empty()) {
        beginText();
        if (blankIsDue_ && !blanksAreDropped_) append(" ", blankAttributes_);
        blankIsDue_ = false;
        append(text, attributes);
        lineIsOpen_ = text.back() != '\n';
        blanksAreDropped_ = !lineIsOpen_;
    }
    if (alignmentIsKnown_ || length() == before) return;
    alignmentIsKnown_ = true;
    result_.paragraph.alignment = alignment;
}

void TextCollector::collapsedText(std::string_view text, const Attributes& attributes) {
    words_.clear();
    std::size_t at = 0;
    while (at < text.size()) {
        if (isBlank(text[at])) {
            if (!blankIsDue_) blankAttributes_ = attributes;
            blankIsDue_ = true;
            ++at;
            continue;
        }
        std::size_t end = at + 1;
        while (end < text.size() && !isBlank(text[end]))
            ++end;
        if (words_.empty()) beginText();
        if (blankIsDue_ && !blanksAreDropped_) {
            // The blank belongs to whoever had it first.
            if (words_.empty()) {
                append(" ", blankAttributes_);
            } else {
                words_ += ' ';
            }
        }
        blankIsDue_ = false;
        blanksAreDropped_ = false;
        lineIsOpen_ = true;
        words_ += text.substr(at, end - at);
        at = end;
    }
    append(words_, attributes);
}

void TextCollector::lineBreak(const Attributes& attributes) {
    beginText();
    blankIsDue_ = false;
    append("\n", attributes);
    lineIsOpen_ = false;
    blanksAreDropped_ = true;
}

void TextCollector::blockBoundary() {
    blankIsDue_ = false;
    blanksAreDropped_ = true;
    lineEndIsDue_ = lineEndIsDue_ || lineIsOpen_;
}

void TextCollector::marker(std::string marker, const Attributes& attributes) {
    writeMarker();
    marker_ = std::move(marker);
    markerAttributes_ = attributes;
}

void TextCollector::writeMarker() {
    if (marker_.empty()) return;
    beginText();
    blockBoundary();
}

void TextCollector::cellBoundary(const Attributes& attributes, std::size_t rowBegin) {
    if (length() > rowBegin) lineEndIsDue_ = false;  // of a block in the cell before
    beginText();
    blankIsDue_ = false;
    append("\t", attributes);
    lineIsOpen_ = true;
    blanksAreDropped_ = true;
}

platform::StyledText TextCollector::finish() {
    while (result_.string.ends_with('\n')) {
        result_.string.pop_back();
        if (--result_.runs.back().length == 0) result_.runs.pop_back();
    }
    return std::move(result_);
}

}  // namespace tavrolin::adapters::html
