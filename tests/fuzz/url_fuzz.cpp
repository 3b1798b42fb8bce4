#include <algorithm>
#include <cstdlib>

#include "tavrolin/foundation/base64.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/utf8.h"

using namespace tavrolin::foundation;

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

void changeAndReadAgain(const URL& url) {
    require(URL::withString(url.absoluteString()) == url);
    require(isValidUtf8(url.path()));
    require(isValidUtf8(url.lastPathComponent()));

    URL changed = url;
    changed.setQueryItems({{"a&", "b=%#"}});
    require(changed.query() == "a%26=b%3D%25%23");
    require(changed.path() == url.path() && changed.host() == url.host());
    changed.removeQuery();
    require(!changed.query());

    const URL longer = url.appendingPathComponent("x y?");
    require(longer.lastPathComponent() == "x y?");
    require(longer.query() == url.query());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto url = URL::withString(text)) changeAndReadAgain(*url);

    const std::string repaired = repairedUtf8(text);
    require(isValidUtf8(repaired));
    require(isValidUtf8(text) == (repaired == text));
    require(removingPercentEncoding(percentEncodedForQuery(repaired)) == repaired);
    removingPercentEncoding(text);
    require(text.empty() || text.ends_with('/') || text.ends_with(lastPathComponent(text)));
    require(lastPathComponent(text).ends_with(pathExtension(text)));

    const auto bytes = base64Decoded(base64Encoded({data, size}));
    require(bytes && std::equal(bytes->begin(), bytes->end(), data, data + size));
    if (const auto decoded = base64Decoded(text)) require(base64Encoded(*decoded) == text);
    return 0;
}
