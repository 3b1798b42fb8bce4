#include "tavrolin/core/register_notification_service.h"

#include <string>
#include <utility>

#include "tavrolin/actions/notification_category_helper.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_double_opt_in_handler.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/platform/application.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

using foundation::Value;
using platform::AuthorizationStatus;
using Preferences = CVNPushPreferencesManager;

namespace {

constexpr AuthorizationStatus kNotDetermined = 0;
constexpr AuthorizationStatus kDenied = 1;

Value now() {
    return platform::current().dispatch->now();
}

void send(std::uint64_t eventId) {
    CVNPushCorvalenHandler::sharedInstance().recordEventWithId(
        static_cast<std::int64_t>(eventId), kEventTypeSystem, Value::dictionary());
}

void keepToken(const Value& token, const Value& old) {
    Preferences::setDevicePushToken(token);
    Preferences::setDevicePushTokenOld(old);
}

}  // namespace

// --- Asking for permission and a token ---------------------------------------------------------

void CVNRegisterNotficationService::registerForPushWithRequestAuthorizationWithOptions(
    std::uint64_t options) {
    const auto answered = [](bool granted, const foundation::Failure& failure) {
        if (failure) {
            const std::string& reason = failure->localizedFailureReason;
            log(LogLevel::error,
                "+[CVNRegisterNotficationService "
                "registerForPushWithRequestAuthorizationWithOptions:]",
                formatMessage(
                    "RequestAuthorizationWithOptions failed with error: %@ - %@",
                    {reason.empty() ? Value() : Value(reason), failure->localizedDescription}));
            return;
        }
        registerForRemoteNotifications();
        evaluateAndRecordPushNotificationPermission(granted);
        if (!granted) CVNPushCorvalenHandler::sharedInstance().saveDoubleOptIn2Timestamp(now());
    };
    dispatchToMainQueue([options, answered] {
        platform::current().notificationCenter->requestAuthorization(options, answered);
    });
}

void CVNRegisterNotficationService::dispatchToMainQueue(std::function<void()> callback) {
    if (callback) platform::current().dispatch->asyncMain(std::move(callback));
}

void CVNRegisterNotficationService::registerForRemoteNotifications() {
    dispatchToMainQueue([] { platform::current().application->registerForRemoteNotifications(); });
}

// --- The token ---------------------------------------------------------------------------------

void CVNRegisterNotficationService::didRegisterForRemoteNotificationsWithDeviceToken(
    const Value& token) {
    static constexpr std::string_view kOperation =
        "+[CVNRegisterNotficationService didRegisterForRemoteNotificationsWithDeviceToken:]";
    const Value text = getDeviceTokenFromData(token);
    if (text.isNil()) return;
    const Value old = Preferences::getDevicePushToken();
    if (!old.isNil() && old != text) {
        keepToken(text, old);
        send(kEventTokenRefreshed);
        log(LogLevel::info, kOperation,
            formatMessage("Device Token refreshed with token %@", {text}));
        return;
    }
    if (CVNPushCorvalenHandler::sharedInstance().checkIfTokenNeedsToBeSend()) {
        keepToken(text, text);
        send(kEventTokenGenerated);
        Preferences::setLastTokenSyncDateTime(now());
    }
    log(LogLevel::info, kOperation,
        formatMessage("Device Token generated with token - %@", {text}));
}

Value CVNRegisterNotficationService::getDeviceTokenFromData(const Value& token) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    if (token.kind() != Value::Kind::data || token.bytes().empty()) return {};
    std::string text;
    text.reserve(2 * token.bytes().size());
    for (const std::uint8_t byte : token.bytes()) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

void CVNRegisterNotficationService::didFailToRegisterForRemoteNotificationsWithError(
    const foundation::Error& error) {
    log(LogLevel::error,
        "+[CVNRegisterNotficationService didFailToRegisterForRemoteNotificationsWithError:]",
        formatMessage("Remote notification failed with error: %@", {error.description()}));
    send(kEventTokenFailed);
}

// --- The permission ----------------------------------------------------------------------------

void CVNRegisterNotficationService::getCurrentNotificationSettingsWithCompletionHandler(
    std::function<void(bool granted)> completion) {
    const auto settingsCame = [completion = std::move(completion)](AuthorizationStatus status) {
        const bool granted = status != kNotDetermined && status != kDenied;
        const Value stored = Preferences::getPermissionForPushNotification();
        const bool changed = granted != (stored.isNumber() && stored.boolValue());
        if (status != kNotDetermined) evaluateAndRecordPushNotificationPermission(granted);
        if (changed || !granted) {
            CVNPushDoubleOptInHandler::sharedInstance().initiateDoubleOptInProcess(status, changed,
                                                                                   false);
        }
        if (completion) completion(granted);
    };
    platform::current().notificationCenter->getAuthorizationStatus(settingsCame);
}

void CVNRegisterNotficationService::evaluateAndRecordPushNotificationPermission(bool granted) {
    const bool isKnown = Preferences::getPermissionForPushNotification() == Value(granted);
    const bool isWanted =
        !isKnown ||
        CVNPushCorvalenHandler::sharedInstance().checkIfNotificationPermissionNeedsToBeSend();
    if (isWanted) {
        Preferences::setIsOptInOutRepeated(isKnown ? 1 : 0);
        recordPushNotificationPermission(granted);
    }
    Preferences::setPermissionForPushNotification(granted);
}

void CVNRegisterNotficationService::recordPushNotificationPermission(bool granted) {
    send(granted ? kEventAppOptIn : kEventAppOptOut);
    Preferences::setDateTimeForLastNotificationPermissionEvent(now());
}

// --- The categories ----------------------------------------------------------------------------

void CVNRegisterNotficationService::setUserActionCategoriesForNotification() {
    using Helper = CVNNotificationCategoryHelper;
    Helper::Categories categories = Helper::getCarouselNotificationCategories();
    for (auto& category : Helper::getUserDefinedNotificationCategories())
        categories.push_back(std::move(category));
    if (categories.empty()) return;
    platform::current().notificationCenter->setNotificationCategories(std::move(categories));
}

}  // namespace tavrolin
