#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

#include "tavrolin/foundation/value.h"

namespace tavrolin {

// The numbers and words of the events that the library reports. Threads: any; nothing here raises
// but for a text argument that is neither a string nor nil.

// Event ids.
inline constexpr std::uint64_t kEventNotificationDelivered = 12;
inline constexpr std::uint64_t kEventNotificationClicked = 13;
inline constexpr std::uint64_t kEventNotificationDismissed = 14;
inline constexpr std::uint64_t kEventNotificationReplied = 19;  // name only: replies go by name
inline constexpr std::uint64_t kEventAppOptIn = 84;
inline constexpr std::uint64_t kEventAppOptOut = 85;
inline constexpr std::uint64_t kEventTokenGenerated = 86;
inline constexpr std::uint64_t kEventTokenFailed = 87;
inline constexpr std::uint64_t kEventTokenRefreshed = 88;

inline constexpr std::string_view kEventNameReply = "nc_apn_reply_submitted";

// Event types.
inline constexpr std::uint64_t kEventTypeCustom = 1;
inline constexpr std::uint64_t kEventTypeSystem = 3;  // notification, token and permission events

// Gateway sources: how a notification arrived.
inline constexpr std::uint64_t kGatewaySourceAPNS = 2;
inline constexpr std::uint64_t kGatewaySourcePushVex = 3;

// Campaign types.
inline constexpr std::uint64_t kCampaignTypeNormal = 0;
inline constexpr std::uint64_t kCampaignTypeScheduled = 1;

// Notification status.
inline constexpr std::uint64_t kStatusScheduled = 1;
inline constexpr std::uint64_t kStatusCanceled = 2;
inline constexpr std::uint64_t kStatusRendered = 3;
inline constexpr std::uint64_t kStatusDelivered = 4;

/// What the functions from a word to a number give for a word that they don't know.
inline constexpr std::uint64_t kUnknownWord = std::numeric_limits<std::uint64_t>::max();

// Keys of the event payloads.
inline constexpr std::string_view kEventDataIsAmplified = "isAmplified";
inline constexpr std::string_view kCommonDataGWSource = "gwSource";
inline constexpr std::string_view kCommonDataPNCampaignType = "ct";
inline constexpr std::string_view kEventDataPNReplyText = "repliedText";
// Exported for the core SDK.
inline constexpr std::string_view kEventDataPNPayload = "payload";
inline constexpr std::string_view kCommonDataPushToken = "pushToken";
inline constexpr std::string_view kCommonDataPushTokenOld = "pushTokenOld";
inline constexpr std::string_view kCommonDataPushTokens = "pushTokens";

/// The event's name; the empty string for an id without one.
std::string_view EventNameString(std::uint64_t eventId);
/// "system_event" but for type 1; nil above 5. Lopsided on purpose.
foundation::Value EventTypeString(std::uint64_t eventType);

/// nil for a number that is no source.
foundation::Value NotificationGatewaySourceString(std::uint64_t source);
/// Exact comparison.
std::uint64_t CVNPushNotificationGatewaySourceFromString(const foundation::Value& source);

/// Number to string; nil for a number that is no campaign type.
foundation::Value CVNNotificationCampaignTypeString(std::uint64_t campaignType);
/// String to number, named "String" all the same.
std::uint64_t CVNPushNotificationCampaignTypeString(const foundation::Value& campaignType);

/// The empty string for a number that is no status.
std::string_view NotificationCurrentStatus(std::uint64_t status);
std::uint64_t NotificationCurrentStatusFromString(const foundation::Value& status);

}  // namespace tavrolin
