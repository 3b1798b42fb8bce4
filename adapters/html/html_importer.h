#pragma once

#include "tavrolin/platform/html_importer.h"

namespace tavrolin::adapters::html {

/// HTML by Gumbo, with the part of CSS that a notification's text has a use for: simple selectors
/// (tag, class, identifier, `*`, `:first-child`, `:last-child`), style attributes, and the
/// properties that styled text can carry.
///
/// Blocks and table rows end with one line end, however far apart a browser sets them; cells are
/// parted by tabs, list items begin with "• " or their number.
///
/// Documents are taken as hostile. What goes too far is left out, so that time and memory grow with
/// the length alone: elements deeper than 256 levels, attributes beyond the 64th of a tag, rules
/// beyond the 256th. Reported as an error: more than 1 MB (the rest is left out), a document of
/// which the tree takes more than 8 MB (half of it is taken, or a quarter, and so on).
///
/// An attribute whose quote is never closed swallows all that follows, as in a browser; where
/// nothing is left by that, the text comes with its tags taken out.
class HTMLImporter final : public platform::HTMLImporter {
public:
    Result importHTML(std::string_view document) override;
};

}  // namespace tavrolin::adapters::html
