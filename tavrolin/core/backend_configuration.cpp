#include "tavrolin/core/backend_configuration.h"

#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin {

CVNPushBackendConfiguration& CVNPushBackendConfiguration::sharedInstance() {
    static auto* instance = new CVNPushBackendConfiguration;
    return *instance;
}

CVNPushBackendConfiguration::OptionalURL CVNPushBackendConfiguration::validateURL(
    const foundation::Value& url, std::uint64_t forURLType) const {
    if (foundation::trimmed(url.string()).empty()) {
        log(LogLevel::error, "-[CVNPushBackendConfiguration validateURL:forURLType:]",
            formatMessage("BaseURL could not be configured for %lu.", {forURLType}));
        return std::nullopt;
    }
    // Untrimmed on purpose: trimming only decides whether there is anything.
    return foundation::URL::withString(url.string());
}

}  // namespace tavrolin
