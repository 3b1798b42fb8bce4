#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavrolin {

/// 0 is "GET", 1 is "POST"; every other code has no text, and the HTTP client's default applies.
std::optional<std::string> CVNPushHTTPMethodString(std::int64_t method);

}  // namespace tavrolin
