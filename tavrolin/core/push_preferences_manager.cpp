#include "tavrolin/core/push_preferences_manager.h"

#include <array>
#include <charconv>
#include <optional>

#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/core/preference_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/foundation/predicate.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Value;

namespace {

constexpr std::string_view kRatingValue = "NotificationRatingValue";
constexpr std::string_view kRatingIndex = "NotificationRatingIndex";
constexpr std::string_view kActionButtonIndex = "NotificationActionButtonIndex";
constexpr std::string_view kCarouselIndex = "NotificationCarouselIndex";

CVNPushPreferences& preferences() {
    return CVNPushPreferences::sharedInstance();
}

std::int64_t integerForKey(std::string_view key) {
    const Value stored = preferences().getObjectForKey(key);
    return stored.isNumber() || stored.isString() ? stored.integerValue() : 0;
}

Value dictionaryForKey(std::string_view key) {
    Value stored = preferences().getObjectForKey(key);
    return stored.isDictionary() ? stored : Value();
}

}  // namespace

// --- The store as a whole ---------------------------------------------------------------------

Value CVNPushPreferencesManager::getAllStoredPreferences() {
    return CVNPushPreferences::getAllStoredPreferences();
}

Value CVNPushPreferencesManager::getAllCorvalenStoredPreferences() {
    const Value all = getAllStoredPreferences();
    static const auto isOurs = foundation::Predicate::withFormat("self BEGINSWITH[c] %@", {"CVN"});
    Value ours = Value::dictionary();
    for (const auto& [key, value] : all.entries()) {
        if (isOurs->evaluate(key)) ours.set(key, value);
    }
    return ours;
}

bool CVNPushPreferencesManager::isStringEmpty(const Value& string) {
    return string.length() == 0;
}

void CVNPushPreferencesManager::optForCorvalenFeatureWithKey(std::string_view key,
                                                             const Value& andValue) {
    if (!preferences().getObjectForKey(key)) preferences().setObject(andValue, key);
}

Value CVNPushPreferencesManager::getCorvalenAppGroup() {
    const Value stored = preferences().getStringForKey(kPlistCorvalenAppGroup);
    if (!isStringEmpty(stored)) return stored;
    const Value info = CVNPlistUility::getAppInfoDictionary();
    const Value& settings = info[kPlistCorvalenSettings];
    return settings.isDictionary() ? settings[kPlistCorvalenAppGroup] : Value();
}

// --- Simple pairs -----------------------------------------------------------------------------

void CVNPushPreferencesManager::setDebugLevel(std::int64_t level) {
    preferences().setObject(level, kPrefDebugLevel);
}

std::int64_t CVNPushPreferencesManager::getDebugLevel() {
    return integerForKey(kPrefDebugLevel);
}

Value CVNPushPreferencesManager::getUserIdentity() {
    return preferences().getStringForKey(kPrefUserIdentity);
}

namespace {

// Whole seconds since 1970.
Value presentEpochTime() {
    const double now = platform::current().dispatch->now().secondsSince1970;
    std::array<char, 330> text{};  // the largest double has 309 digits
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), now, std::chars_format::fixed, 0).ptr;
    return std::string_view(text.data(), end);
}

}  // namespace

void CVNPushPreferencesManager::setPushVexRequestEpochTime() {
    preferences().putString(presentEpochTime(), kPrefPushVexRequestEpochTime);
}

Value CVNPushPreferencesManager::getPushVexRequestEpochTime() {
    Value stored = preferences().getStringForKey(kPrefPushVexRequestEpochTime);
    if (stored) return stored;
    const Value now = presentEpochTime();
    preferences().putString(now, kPrefPushVexRequestEpochTime);
    return now;
}

void CVNPushPreferencesManager::setNotificationAuthorizationOptions(std::uint64_t options) {
    preferences().setObject(options, kPrefNotificationAuthorizationOptions);
}

std::uint64_t CVNPushPreferencesManager::getNotificationAuthorizationOptions() {
    return static_cast<std::uint64_t>(integerForKey(kPrefNotificationAuthorizationOptions));
}

void CVNPushPreferencesManager::setOptForPushNotification(bool opt) {
    preferences().setBoolean(opt, kPrefUserOptPushNotification);
}

bool CVNPushPreferencesManager::getOptForPushNotification() {
    return preferences().getBooleanForKey(kPrefUserOptPushNotification);
}

// --- The token --------------------------------------------------------------------------------

void CVNPushPreferencesManager::setDevicePushToken(const Value& token) {
    preferences().putString(token, kPrefPushToken);
    setBase64EncodedDevicePushToken(token);
}

Value CVNPushPreferencesManager::getDevicePushToken() {
    return preferences().getStringForKey(kPrefPushToken);
}

void CVNPushPreferencesManager::setBase64EncodedDevicePushToken(const Value& token) {
    // Despite its name it stores the token itself: values already on devices are of this form.
    preferences().putString(token, kPrefPushTokenEncoded);
}

Value CVNPushPreferencesManager::getBase64EncodedDevicePushToken() {
    return preferences().getStringForKey(kPrefPushTokenEncoded);
}

void CVNPushPreferencesManager::setDevicePushTokenOld(const Value& token) {
    preferences().putString(token, kPrefPushTokenOld);
}

Value CVNPushPreferencesManager::getDevicePushTokenOld() {
    return preferences().getStringForKey(kPrefPushTokenOld);
}

void CVNPushPreferencesManager::setLastTokenSyncDateTime(const Value& date) {
    preferences().setDate(date, kPrefLastEventTokenSyncDateTime);
}

Value CVNPushPreferencesManager::getLastTokenSyncDateTime() {
    return preferences().getDateForKey(kPrefLastEventTokenSyncDateTime);
}

// --- Attribution ------------------------------------------------------------------------------

void CVNPushPreferencesManager::setUserNotificationAttribution(const Value& parameters) {
    preferences().setObject(parameters, kPrefUserNotificationAttributionParams);
}

Value CVNPushPreferencesManager::getUserNotificationAttribution() {
    return dictionaryForKey(kPrefUserNotificationAttributionParams);
}

void CVNPushPreferencesManager::removeUserNotificationAttribution() {
    preferences().removeObjectForKey(kPrefUserNotificationAttributionParams);
}

std::vector<URLQueryItem> CVNPushPreferencesManager::getCorvalenAttrParameters() {
    const Value parameters = getUserNotificationAttribution();
    std::vector<URLQueryItem> items;
    for (const auto& [key, value] : parameters.entries()) {
        if (!value.isString()) continue;
        const std::optional<std::string> decoded =
            foundation::removingPercentEncoding(value.string());
        items.push_back({std::string(key.string()), decoded ? Value(*decoded) : Value()});
    }
    return items;
}

// --- States -----------------------------------------------------------------------------------

void CVNPushPreferencesManager::setDateTimeForLastNotificationPermissionEvent(const Value& date) {
    preferences().setDate(date, kPrefLastEventNotificationPermissionSyncDateTime);
}

Value CVNPushPreferencesManager::getDateTimeForLastNotificationPermissionEvent() {
    return preferences().getDateForKey(kPrefLastEventNotificationPermissionSyncDateTime);
}

void CVNPushPreferencesManager::setNotificationCategoriesUploaded(bool uploaded) {
    preferences().setBoolean(uploaded, kPrefNotificationCategoriesUpload);
}

bool CVNPushPreferencesManager::getNotificationCategoriesUploaded() {
    return preferences().getBooleanForKey(kPrefNotificationCategoriesUpload);
}

void CVNPushPreferencesManager::setApnClickLink(const Value& link) {
    preferences().putString(link, kPrefApnClickLink);
}

Value CVNPushPreferencesManager::getApnClickLink() {
    return preferences().getStringForKey(kPrefApnClickLink);
}

void CVNPushPreferencesManager::setDoubleOptInInitiatedStatus(bool status) {
    preferences().setBoolean(status, KPrefDoubleOptInInitiatedStatus);
}

bool CVNPushPreferencesManager::getDoubleOptInInitiatedStatus() {
    return preferences().getBooleanForKey(KPrefDoubleOptInInitiatedStatus);
}

void CVNPushPreferencesManager::setPermissionForPushNotification(bool permission) {
    preferences().setBoolean(permission, kPrefPermissionForPushNotification);
}

Value CVNPushPreferencesManager::getPermissionForPushNotification() {
    return preferences().getObjectForKey(kPrefPermissionForPushNotification);
}

void CVNPushPreferencesManager::setIsOptInOutRepeated(const Value& repeated) {
    preferences().setObject(repeated, kPrefIsOptInOutRepeated);
}

Value CVNPushPreferencesManager::getIsOptInOutRepeated() {
    return preferences().getObjectForKey(kPrefIsOptInOutRepeated);
}

// --- What the content extension leaves --------------------------------------------------------

void CVNPushPreferencesManager::setRatingInfoWithRatingValue(const Value& ratingValue,
                                                             std::int64_t andRatingIndex) {
    preferences().setObject(ratingValue, kRatingValue);
    preferences().setObject(andRatingIndex, kRatingIndex);
}

Value CVNPushPreferencesManager::getRatingValue() {
    return preferences().getObjectForKey(kRatingValue);
}

Value CVNPushPreferencesManager::getRatingIndex() {
    return preferences().getObjectForKey(kRatingIndex);
}

void CVNPushPreferencesManager::removeRatingInfo() {
    preferences().removeObjectForKey(kRatingValue);
    preferences().removeObjectForKey(kRatingIndex);
}

void CVNPushPreferencesManager::setActionButtonIndex(std::int64_t index) {
    preferences().putString(std::to_string(index), kActionButtonIndex);
}

Value CVNPushPreferencesManager::getActionButtonIndex() {
    return preferences().getStringForKey(kActionButtonIndex);
}

void CVNPushPreferencesManager::removeActionButtonIndex() {
    preferences().removeObjectForKey(kActionButtonIndex);
}

void CVNPushPreferencesManager::setCarouselIndex(std::int64_t index) {
    preferences().putString(std::to_string(index), kCarouselIndex);
}

Value CVNPushPreferencesManager::getCarouselIndex() {
    return preferences().getStringForKey(kCarouselIndex);
}

void CVNPushPreferencesManager::removeCarouselIndex() {
    preferences().removeObjectForKey(kCarouselIndex);
}

}  // namespace tavrolin
