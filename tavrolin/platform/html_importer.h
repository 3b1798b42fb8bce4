#pragma once

#include <string_view>

#include "tavrolin/foundation/error.h"
#include "tavrolin/platform/styled_text.h"

namespace tavrolin::platform {

/// Turns HTML into styled text. Threads: any.
class HTMLImporter {
public:
    struct Result {
        StyledText text;  // whatever could be made of it, also when there was an error
        foundation::Error error;
    };

    virtual ~HTMLImporter() = default;

    /// A document in UTF-8, read as browsers do: unclosed and misnested tags are mended, scripts,
    /// frames and what a link would load are passed over, unknown tags and styles are ignored. The
    /// document's style sheet counts (`body`, tags, classes; font size, weight, style, decoration,
    /// colour, alignment). One pixel is one point. No line end is left at the end.
    virtual Result importHTML(std::string_view document) = 0;
};

}  // namespace tavrolin::platform
