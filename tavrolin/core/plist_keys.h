#pragma once

#include <string_view>

namespace tavrolin {

// The names in the app's Info dictionary and in its configuration files. Part of the interface that
// the library shares with the core SDK, so some are not read here.

inline constexpr std::string_view kPlistCorvalenSettings = "CorvalenKeys";
inline constexpr std::string_view kPlistCorvalenAppGroup = "CorvalenAppGroup";
inline constexpr std::string_view kPlistCorvalenNotificationIcon = "CorvalenNotificationIcon";
inline constexpr std::string_view kPlistCorvalenAppId = "CorvalenAppId";
inline constexpr std::string_view kPlistCorvalenAutoFetchLocation = "CorvalenAutoFetchLocation";
inline constexpr std::string_view kPlistCorvalenAutoFetchInboxNotification =
    "CorvalenAutoFetchInboxNotification";
inline constexpr std::string_view kPlistCorvalenIgnorePlist = "CorvalenIgnorePlist";
inline constexpr std::string_view kPlistCorvalenUseOldSDKConfig = "CorvalenUseOldSDKConfig";
inline constexpr std::string_view kPlistKestinSettings = "KestinKeys";
inline constexpr std::string_view kPlistKestinAppId = "KestinAppId";
inline constexpr std::string_view kPlistKestinAppKey = "KestinAppKey";

// The host's action-button file.
inline constexpr std::string_view kPlistCorvalenConfigFileName = "CorvalenConfig";
inline constexpr std::string_view kPlistCorvalenConfigFileType = "plist";
inline constexpr std::string_view kPlistCorvalenConfigActionButtons = "ActionButtons";
inline constexpr std::string_view kPlistCorvalenConfigActionButtonsV2 = "ActionButtons_v2";

// The road to the content extension's list of categories in its Info dictionary.
inline constexpr std::string_view kPlistCorvalenInfoFileName = "Info";
inline constexpr std::string_view kPlistCorvalenInfoFileType = "plist";
inline constexpr std::string_view kPlistCorvalenInfoNSExtention = "NSExtension";
inline constexpr std::string_view kPlistCorvalenInfoNSExtensionAttributes = "NSExtensionAttributes";
inline constexpr std::string_view kPlistCorvalenInfoUNNotificationExtensionCategory =
    "UNNotificationExtensionCategory";

}  // namespace tavrolin
