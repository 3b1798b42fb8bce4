#pragma once

#include <string>
#include <string_view>

namespace tavrolin::adapters::html {

/// A document as the parser may have it.
struct BoundedDocument {
    /// The document without what would make the parser's work grow faster than its length.
    std::string_view text;
    /// It ends inside a tag, as with a quote that is never closed: the parser will drop what
    /// follows that tag's beginning.
    bool endsInsideTag = false;

    std::string changed;  // what `text` looks at when something was left out
};

/// Finds tags as the parser does, without building anything. `bounded` is to stay where it is as
/// long as its text is used.
void boundDocument(std::string_view document, BoundedDocument& bounded);

/// The document with all that looks like a tag taken out of its body, up to the next ">" each, and
/// whatever is not shown. The head stays, so that its styles still count.
std::string withoutTags(std::string_view document);

}  // namespace tavrolin::adapters::html
