#pragma once

#include <functional>
#include <string_view>

#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/application.h"

namespace tavrolin {

/// Decides what becomes of a deep link. Completions run before the operation returns. Nothing
/// raises. Threads: any.
class CVNPushDeeplinkHelper {
public:
    using Completion = std::function<void(const foundation::Value& link, bool deliverToApp,
                                          const foundation::Value& customPayload)>;

    /// Web links and links of the app's own schemes are for the app; others are opened by the
    /// system. Without a link and a custom payload the completion is not called.
    static void handleDeeplinkURLString(const foundation::Value& deeplink,
                                        const foundation::Value& customPayload,
                                        const Completion& withCompletion);
    static void handleOpenURLScheme(const foundation::URL& url, const Completion& withCompletion);
    /// Calls the completion for an activity of the web-browsing type only.
    static void handleUniversalLinkWithUserActivity(const platform::UserActivity& activity,
                                                    const Completion& andCompletion);
    /// Whether the scheme contains one of those in the app's Info dictionary, whatever the case.
    static bool doesMatchAppConfiguredURLScheme(std::string_view scheme);
};

}  // namespace tavrolin
