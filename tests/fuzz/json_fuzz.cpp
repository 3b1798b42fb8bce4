#include <cstdint>
#include <cstdlib>

#include "adapters/json/json_text.h"
#include "tavrolin/foundation/json.h"

using namespace tavrolin::foundation;
using tavrolin::adapters::json::JSONText;
using Style = tavrolin::platform::JSONText::Style;

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

// The same down to the kinds of the numbers and the order of the keys.
bool isSame(const Value& a, const Value& b) {
    return a == b && *jsonWithValue(a, JSONStyle::compact) == *jsonWithValue(b, JSONStyle::compact);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const JSONText json;
    const auto value = json.parse(text);
    const auto plain = valueWithJSON(text);
    require(static_cast<bool>(value) == static_cast<bool>(plain));
    if (!value) {
        require(value.error().localizedDescription.starts_with("line "));
        return 0;
    }
    require(isSame(*value, *plain));
    for (const Style style : {Style::compact, Style::pretty}) {
        const auto written = json.serialise(*value, style);
        require(static_cast<bool>(written));
        require(isSame(*json.parse(*written), *value));
    }
    return 0;
}
