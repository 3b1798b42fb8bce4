#include <cstdint>
#include <cstdlib>

#include "adapters/html/html_importer.h"
#include "tavrolin/foundation/utf8.h"

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

// The text is whole, its runs cover it in whole characters, and it ends with no line end.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using tavrolin::foundation::isValidUtf8;
    const auto result = tavrolin::adapters::html::HTMLImporter().importHTML(
        {reinterpret_cast<const char*>(bytes), size});
    const std::string& text = result.text.string;
    require(isValidUtf8(text) && !text.ends_with('\n'));
    std::size_t covered = 0;
    for (const auto& run : result.text.runs) {
        require(run.length > 0 && run.attributes.font.size >= 0 &&
                run.attributes.font.size <= 5000);
        require(covered + run.length <= text.size());
        require(isValidUtf8(std::string_view(text).substr(covered, run.length)));
        covered += run.length;
    }
    require(covered == text.size());
    return 0;
}
