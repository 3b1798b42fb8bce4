#include "tavrolin/network/http_method.h"

namespace tavrolin {

std::optional<std::string> CVNPushHTTPMethodString(std::int64_t method) {
    switch (method) {
        case 0:
            return "GET";
        case 1:
            return "POST";
        default:
            return std::nullopt;
    }
}

}  // namespace tavrolin
