#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tavrolin/platform/html_importer.h"

namespace tavrolin::adapters::memory {

/// Takes the tags out, decodes &amp; &lt; &gt; &quot; and &apos;, and gives the whole text the
/// size, weight and colour (#rrggbb) that the style sheet has for the body. Threads: any.
class MemoryHTMLImporter final : public platform::HTMLImporter {
public:
    /// Comes with every text from now on.
    void setError(foundation::Error error);
    /// The documents since the last time.
    std::vector<std::string> takeDocuments();

    Result importHTML(std::string_view document) override;

private:
    std::mutex mutex_;
    foundation::Error error_;
    std::vector<std::string> documents_;
};

}  // namespace tavrolin::adapters::memory
