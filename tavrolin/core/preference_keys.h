#pragma once

#include <string_view>

namespace tavrolin {

// The keys of the shared preferences, without the prefix under which they are stored. Part of the
// interface that the library shares with the core SDK: the second group is neither read nor written
// here.

inline constexpr std::string_view kPrefDebugLevel = "DebugLevel";
inline constexpr std::string_view kPrefUserIdentity = "UserIdentity";
inline constexpr std::string_view kPrefPushVexRequestEpochTime = "PushVexRequestEpochTime";
inline constexpr std::string_view kPrefNotificationAuthorizationOptions =
    "NotificationAuthorizationOptions";
inline constexpr std::string_view kPrefUserOptPushNotification = "UserOptPushNotification";
inline constexpr std::string_view kPrefPushToken = "PushToken";
inline constexpr std::string_view kPrefPushTokenEncoded = "PushTokenEncoded";
inline constexpr std::string_view kPrefPushTokenOld = "PushTokenOld";
inline constexpr std::string_view kPrefUserNotificationAttributionParams =
    "UserNotificationAttributionParams";
inline constexpr std::string_view kPrefLastEventTokenSyncDateTime = "LastEventTokenSyncDateTime";
inline constexpr std::string_view kPrefLastEventNotificationPermissionSyncDateTime =
    "LastEventNotificationPermissionSyncDateTime";
inline constexpr std::string_view kPrefNotificationCategoriesUpload =
    "NotificationCategoriesUpload";
inline constexpr std::string_view kPrefApnClickLink = "ApnClickLink";
// The capital K is part of the interface.
inline constexpr std::string_view KPrefDoubleOptInInitiatedStatus = "DoubleOptInInitiatedStatus";
inline constexpr std::string_view kPrefPermissionForPushNotification =
    "PermissionForPushNotification";
inline constexpr std::string_view kPrefIsOptInOutRepeated = "IsOptInOutRepeated";

inline constexpr std::string_view kPrefBackendEnvironment = "BackendEnvironment";
inline constexpr std::string_view kPrefUserIdentityOld = "UserIdentityOld";
inline constexpr std::string_view kPrefUserProfileHash = "UserProfileHash";
inline constexpr std::string_view kPrefCurrentSessionId = "CurrentSessionId";
inline constexpr std::string_view kPrefLastSavedLocation = "LastSavedLocation";
inline constexpr std::string_view kPrefCorvalenSettings = "CorvalenSettings";
inline constexpr std::string_view kPrefFirstAppLaunch = "FirstAppLaunch";
inline constexpr std::string_view kPrefLastAppActiveDateTime = "LastAppActiveDateTime";
inline constexpr std::string_view kPrefLastEventProcessedDateTime = "LastEventProcessedDateTime";
inline constexpr std::string_view kPrefDeviceGuid = "DeviceGuid";
inline constexpr std::string_view kPrefOldDeviceGuid = "OldDeviceGuid";
inline constexpr std::string_view kPrefAppVersionStored = "AppVersionStored";
inline constexpr std::string_view kPrefAppBuildVersionStored = "AppBuildVersionStored";
inline constexpr std::string_view kPrefAppVersionStoredForCorvalenInstall =
    "AppVersionStoredForInstall";
inline constexpr std::string_view kPrefAppBuildVersionStoredForCorvalenInstall =
    "AppBuildVersionStoredForInstall";
inline constexpr std::string_view kPrefDeviceLocale = "DeviceLocale";
inline constexpr std::string_view kPrefDeviceTimeZone = "TimeZone";
inline constexpr std::string_view kPrefDeviceOsVersion = "DeviceOsVersion";
inline constexpr std::string_view kPrefDeviceAdvertiserId = "DeviceAdvertiserId";
inline constexpr std::string_view kPrefDeviceCarrierName = "DeviceCarrierName";
inline constexpr std::string_view kPrefSdkVersion = "SdkVersion";
inline constexpr std::string_view kPrefInAppAttributionParams = "InAppAttributionParams";
inline constexpr std::string_view kPrefUserOptTracking = "UserOptTracking";
inline constexpr std::string_view kPrefUserOptInAppMessage = "UserOptInAppMessage";
inline constexpr std::string_view kPrefDeveloperAppInstallRequested =
    "DeveloperAppInstallRequested";
inline constexpr std::string_view kPrefDeveloperAppUpdateRequested = "DeveloperAppUpdateRequested";
inline constexpr std::string_view kPrefPermissionForLocation = "PermissionForLocation";
inline constexpr std::string_view kPrefInAppClickLink = "InAppClickLink";
inline constexpr std::string_view kPrefAppInboxClickLink = "InboxClickLink";

}  // namespace tavrolin
