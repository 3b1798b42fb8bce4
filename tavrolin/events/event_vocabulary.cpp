#include "tavrolin/events/event_vocabulary.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavrolin {

namespace {

using Word = std::pair<std::uint64_t, std::string_view>;

constexpr std::array<Word, 9> kEventNames = {{{kEventNotificationDelivered, "pn_delivered"},
                                              {kEventNotificationClicked, "pn_clicked"},
                                              {kEventNotificationDismissed, "pn_dismissed"},
                                              {kEventNotificationReplied, "pn_replied"},
                                              {kEventAppOptIn, "app_pn_opt_in"},
                                              {kEventAppOptOut, "app_pn_opt_out"},
                                              {kEventTokenGenerated, "pn_token_generated"},
                                              {kEventTokenFailed, "pn_token_failed"},
                                              {kEventTokenRefreshed, "pn_token_refreshed"}}};

constexpr std::array<Word, 2> kGatewaySources = {
    {{kGatewaySourceAPNS, "APNS"}, {kGatewaySourcePushVex, "PUSH_VEX"}}};

constexpr std::array<Word, 2> kCampaignTypes = {
    {{kCampaignTypeNormal, "normal"}, {kCampaignTypeScheduled, "scheduled"}}};

// "canceled" with one l is part of the stored data.
constexpr std::array<Word, 4> kStatuses = {{{kStatusScheduled, "scheduled"},
                                            {kStatusCanceled, "canceled"},
                                            {kStatusRendered, "rendered"},
                                            {kStatusDelivered, "delivered"}}};

// The empty string when the number has no word.
template <std::size_t N>
std::string_view wordOf(const std::array<Word, N>& words, std::uint64_t number) {
    const auto* found = std::find_if(words.begin(), words.end(),
                                     [&](const Word& word) { return word.first == number; });
    return found == words.end() ? std::string_view() : found->second;
}

template <std::size_t N>
foundation::Value wordOrNil(const std::array<Word, N>& words, std::uint64_t number) {
    const std::string_view word = wordOf(words, number);
    return word.empty() ? foundation::Value() : foundation::Value(word);
}

template <std::size_t N>
std::uint64_t numberOf(const std::array<Word, N>& words, std::string_view text) {
    const auto* found = std::find_if(words.begin(), words.end(),
                                     [&](const Word& word) { return word.second == text; });
    return found == words.end() ? kUnknownWord : found->first;
}

}  // namespace

std::string_view EventNameString(std::uint64_t eventId) {
    return wordOf(kEventNames, eventId);
}

foundation::Value EventTypeString(std::uint64_t eventType) {
    if (eventType > 5) return {};
    return eventType == kEventTypeCustom ? "custom_event" : "system_event";
}

foundation::Value NotificationGatewaySourceString(std::uint64_t source) {
    return wordOrNil(kGatewaySources, source);
}

std::uint64_t CVNPushNotificationGatewaySourceFromString(const foundation::Value& source) {
    return numberOf(kGatewaySources, source.string());
}

foundation::Value CVNNotificationCampaignTypeString(std::uint64_t campaignType) {
    return wordOrNil(kCampaignTypes, campaignType);
}

std::uint64_t CVNPushNotificationCampaignTypeString(const foundation::Value& campaignType) {
    return numberOf(kCampaignTypes, campaignType.string());
}

std::string_view NotificationCurrentStatus(std::uint64_t status) {
    return wordOf(kStatuses, status);
}

std::uint64_t NotificationCurrentStatusFromString(const foundation::Value& status) {
    return numberOf(kStatuses, status.string());
}

}  // namespace tavrolin
