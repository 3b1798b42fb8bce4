#pragma once

#include "tavrolin/platform/html_importer.h"

namespace tavrolin::adapters::memory {

/// Takes the tags out, decodes &amp; &lt; &gt; &quot; and &apos;, and gives the whole text the
/// size, weight and colour (#rrggbb) that the style sheet has for the body. Threads: any.
class MemoryHTMLImporter final : public platform::HTMLImporter {
public:
    Result importHTML(std::string_view document) override;
};

}  // namespace tavrolin::adapters::memory
