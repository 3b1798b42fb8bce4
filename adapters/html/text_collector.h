#pragma once

#include <string>
#include <string_view>

#include "adapters/html/style.h"

namespace tavrolin::adapters::html {

/// Collects the text of a document in its order, with blanks and line ends as a browser sets them.
class TextCollector {
public:
    using Attributes = platform::TextAttributes;

    void text(std::string_view text, const Attributes& attributes, WhiteSpace whiteSpace,
              std::optional<platform::TextAlignment> alignment);
    void lineBreak(const Attributes& attributes);
    /// A block begins or ends: what follows stands on a line of its own.
    void blockBoundary();
    /// What the next text is to begin with.
    void marker(std::string marker, const Attributes& attributes);
    /// Writes the marker even though no text followed.
    void writeMarker();
    /// A cell begins that is not the first of its row; `rowBegin` is the length when the row began.
    void cellBoundary(const Attributes& attributes, std::size_t rowBegin);

    std::size_t length() const { return result_.string.size(); }
    /// Without line ends at the end.
    platform::StyledText finish();

private:
    void collapsedText(std::string_view text, const Attributes& attributes);
    void beginText();  // on its own line if it must, after its marker
    void append(std::string_view text, const Attributes& attributes);

    platform::StyledText result_;
    bool alignmentIsKnown_ = false;
    bool lineIsOpen_ = false;       // something stands on it
    bool blanksAreDropped_ = true;  // at the beginning of a line
    bool lineEndIsDue_ = false;
    bool blankIsDue_ = false;
    Attributes blankAttributes_;
    std::string marker_;
    Attributes markerAttributes_;
    std::string words_;
};

}  // namespace tavrolin::adapters::html
