#include "tavrolin/actions/push_deeplink_helper.h"

#include <optional>
#include <string>

#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/foundation/utf8.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::URL;
using foundation::Value;

namespace {

constexpr std::string_view kHTTPProtocalPrefix = "http";    // spelt so
constexpr std::string_view kHTTPSProtocalPrefix = "https";  // every such link has the other one too
constexpr std::string_view kURLTypes = "CFBundleURLTypes";
constexpr std::string_view kURLSchemes = "CFBundleURLSchemes";

// Whether the link is for the app. Another one with a scheme is opened by the system.
bool isForApp(std::string_view link) {
    const std::optional<URL> url = URL::withString(link);
    if (!url || url->scheme().empty()) return false;
    const Value lowercase = Value(link).lowercaseString();
    const std::string_view text = lowercase.string();
    if (text.starts_with(kHTTPProtocalPrefix) || text.starts_with(kHTTPSProtocalPrefix) ||
        CVNPushDeeplinkHelper::doesMatchAppConfiguredURLScheme(url->scheme())) {
        return true;
    }
    platform::current().application->openURL(*url);
    return false;
}

}  // namespace

void CVNPushDeeplinkHelper::handleDeeplinkURLString(const Value& deeplink,
                                                    const Value& customPayload,
                                                    const Completion& withCompletion) {
    const std::string_view text = foundation::trimmed(foundation::stringOrEmpty(deeplink));
    const bool hasCustomKeys = customPayload.isDictionary() && customPayload.count() > 0;
    if (text.empty() && !hasCustomKeys) return;
    const bool deliverToApp = isForApp(text) || hasCustomKeys;
    if (!withCompletion) return;
    withCompletion(deeplink.isString() ? Value(text) : Value(), deliverToApp, customPayload);
}

void CVNPushDeeplinkHelper::handleOpenURLScheme(const URL& url, const Completion& withCompletion) {
    if (withCompletion) withCompletion(url.absoluteString(), true, {});
}

void CVNPushDeeplinkHelper::handleUniversalLinkWithUserActivity(
    const platform::UserActivity& activity, const Completion& andCompletion) {
    if (activity.activityType != platform::kActivityTypeBrowsingWeb || !andCompletion) return;
    const auto& url = activity.webpageURL;
    andCompletion(url ? Value(url->absoluteString()) : Value(), true, {});
}

bool CVNPushDeeplinkHelper::doesMatchAppConfiguredURLScheme(std::string_view scheme) {
    bool matches = false;
    const bool isChecked =
        guard("+[CVNPushDeeplinkHelper doesMatchAppConfiguredURLScheme:]",
              "Could not check URL scheme for deeplink due to exception: %@", [&] {
                  const Value given = Value(scheme).lowercaseString();
                  const Value info = CVNPlistUility::getAppInfoDictionary();
                  for (const Value& type : info[kURLTypes].items()) {
                      for (const Value& configured : type[kURLSchemes].items()) {
                          const Value own = configured.lowercaseString();
                          // The empty text is contained in nothing here.
                          matches |= own.length() > 0 &&
                                     given.string().find(own.string()) != std::string_view::npos;
                      }
                  }
              });
    return isChecked && matches;
}

}  // namespace tavrolin
