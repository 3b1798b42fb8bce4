#include "tavrolin/core/backend_configuration.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tavrolin/core/logger.h"

namespace tavrolin {

namespace {

// Blanks and line breaks, Unicode's included.
bool isOnlyWhiteSpace(std::string_view text) {
    static constexpr std::array<std::string_view, 26> kWhiteSpace = {
        " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00a0", "\u1680",
        "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
        "\u2009", "\u200a", "\u200b", "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"};
    while (!text.empty()) {
        const auto* const found =
            std::find_if(kWhiteSpace.begin(), kWhiteSpace.end(),
                         [&](std::string_view space) { return text.starts_with(space); });
        if (found == kWhiteSpace.end()) return false;
        text.remove_prefix(found->size());
    }
    return true;
}

}  // namespace

CVNPushBackendConfiguration& CVNPushBackendConfiguration::sharedInstance() {
    static auto* instance = new CVNPushBackendConfiguration;
    return *instance;
}

CVNPushBackendConfiguration::OptionalURL CVNPushBackendConfiguration::validateURL(
    const foundation::Value& url, std::uint64_t forURLType) const {
    if (isOnlyWhiteSpace(url.string())) {
        log(LogLevel::error, "-[CVNPushBackendConfiguration validateURL:forURLType:]",
            formatMessage("BaseURL could not be configured for %lu.", {forURLType}));
        return std::nullopt;
    }
    // Untrimmed on purpose: trimming only decides whether there is anything.
    return foundation::URL::withString(url.string());
}

}  // namespace tavrolin
