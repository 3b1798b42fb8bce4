#include "tavrolin/core/plist_utility.h"

#include <optional>
#include <string>

#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Value;

Value CVNPlistUility::getAppInfoDictionary() {
    Value info;
    const bool read = guard("+[CVNPlistUility getAppInfoDictionary]",
                            "Could not fetch data from app's info dictionary due to exception: %@",
                            [&] { info = platform::current().bundles->main().infoDictionary(); });
    return read ? info : Value::dictionary();
}

Value CVNPlistUility::getNotificationIconName() {
    const Value info = getAppInfoDictionary();
    if (!info.isDictionary()) return {};
    const Value& settings = info[kPlistCorvalenSettings];
    if (!settings.isDictionary() || settings.count() == 0) return {};
    return settings[kPlistCorvalenNotificationIcon];
}

Value CVNPlistUility::getCorvalenPushSDKConfig() {
    return getCorvalenPushSDKConfigDictionary();
}

Value CVNPlistUility::getCorvalenPushSDKConfigDictionary() {
    static constexpr std::string_view kOperation =
        "+[CVNPlistUility getCorvalenPushSDKConfigDictionary]";
    static constexpr std::string_view kName = "CorvalenPushSDKConfig";
    static constexpr std::string_view kType = "plist";

    Value config;
    const std::string complaint =
        formatMessage("Could not fetch data from %@.%@ due to exception: %@", {kName, kType});
    const bool read = guard(kOperation, complaint, [&] {
        platform::Bundles& bundles = *platform::current().bundles;
        const std::string identifier = bundles.library().identifier();
        log(LogLevel::info, kOperation,
            formatMessage("CorvalenPush SDK Framework Bundle Identifier: %@", {identifier}));
        const platform::Bundle* bundle = bundles.withIdentifier(identifier);
        if (bundle == nullptr) return;
        const std::optional<std::string> path = bundle->pathForResource(kName, kType);
        if (path) config = bundles.dictionaryWithContentsOfFile(*path);
    });
    return read ? config : Value::dictionary();
}

Value CVNPlistUility::getLayoutConfigForNotificationType(const Value& type) {
    const Value config = getCorvalenPushSDKConfig();
    if (!config.isDictionary() || !type.isString()) return Value::dictionary();
    const Value& layouts = config["LayoutConfig"];
    if (!layouts.isDictionary() || !layouts[type.string()]) return Value::dictionary();
    return layouts[type.string()];
}

}  // namespace tavrolin
