#include "tavrolin/network/parameter_encoder.h"

#include <string>
#include <utility>
#include <vector>

#include "tavrolin/platform/json_text.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

void CVNPushURLParameterEncoder::encode(platform::URLRequest& request,
                                        const foundation::Value& params) {
    if (params.count() == 0 || request.url.absoluteString().empty()) return;
    std::vector<std::pair<std::string, std::string>> items;
    items.reserve(params.count());
    for (const auto& [key, value] : params.entries()) {
        items.emplace_back(key.string(), value.string());
    }
    request.url.setQueryItems(items);
}

void CVNPushJSONParameterEncoder::encode(platform::URLRequest& request,
                                         const foundation::Value& params) {
    if (params.count() == 0) return;
    auto text = platform::current().json->serialise(params, platform::JSONText::Style::compact);
    if (text) request.body = std::move(*text);
}

}  // namespace tavrolin
