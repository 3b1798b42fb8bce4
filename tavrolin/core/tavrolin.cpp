#include "tavrolin/core/tavrolin.h"

#include <memory>
#include <utility>

#include "tavrolin/actions/local_notification_scheduler.h"
#include "tavrolin/actions/notification_helper.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/core/push_double_opt_in_handler.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/register_notification_service.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/events/notification_response_service.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace tavrolin {

using foundation::Failure;
using foundation::Value;
using platform::BackgroundFetchResult;

namespace {

// The core SDK's own event ids for the user's opt-in and opt-out; they have no name here.
constexpr std::int64_t kEventUserOptOut = 73;

constexpr double kScheduleCheckDelay = 5;  // seconds after the app became active

// The app group's container; nothing without a group, and the store then finds its own place.
std::optional<foundation::URL> storeDirectory() {
    return CVNPushFileUtility::appGroupURLWithAppGroup(
        CVNPushPreferencesManager::getCorvalenAppGroup());
}

}  // namespace

Tavrolin& Tavrolin::sharedInstance() {
    static auto* instance = new Tavrolin;
    return *instance;
}

Tavrolin::Tavrolin() {
    configureSettingsWithInfoPlist(plistAppInfoDictionary());
}

Value Tavrolin::plistAppInfoDictionary() {
    std::call_once(infoDictionaryRead_,
                   [this] { plistAppInfoDictionary_ = CVNPlistUility::getAppInfoDictionary(); });
    return plistAppInfoDictionary_;
}

Value Tavrolin::appGroup() const {
    return CVNPushPreferencesManager::getCorvalenAppGroup();
}

void Tavrolin::configureSettingsWithInfoPlist(const Value& infoPlist) {
    guard("-[Tavrolin configureSettingsWithInfoPlist:]",
          "Fail to configure app settings due to exception %@", [&] {
              addAppObserver();
              CVNPushPreferences::sharedInstance().setSuitName(
                  infoPlist[kPlistCorvalenSettings][kPlistCorvalenAppGroup]);
          });
}

// --- Start ------------------------------------------------------------------------------------

void Tavrolin::initSDKWithLaunchOptions(const Value& launchOptions) {
    CVNPushCoreDataController& store = CVNPushCoreDataController::sharedInstance();
    if (store.storeLoaded()) return;
    guard("-[Tavrolin initSDKWithLaunchOptions:]",
          "Could Initialize the CorvalenPush SDK due to exception = %@", [&] {
              store.loadStoreAtPath(storeDirectory(), [this, launchOptions](const Failure& error) {
                  if (error) {
                      log(LogLevel::error, "-[Tavrolin initSDKWithLaunchOptions:]",
                          "Could not Initialize the CorvalenPush SDK due to exception");
                      return;
                  }
                  storeDidLoad(launchOptions);
              });
          });
}

void Tavrolin::storeDidLoad(const Value& launchOptions) {
    constexpr std::string_view kOperation = "-[Tavrolin initSDKWithLaunchOptions:]";
    log(LogLevel::info, kOperation, "Store Loaded");
    // Asked of the launch options as a whole, not of the notification inside them: deliberate.
    if (CVNNotificationParser::isSilentNotification(launchOptions)) {
        didReceiveRemoteNotification(launchOptions[UIApplicationLaunchOptionsRemoteNotificationKey],
                                     [](BackgroundFetchResult) {});
    }
    log(LogLevel::system, kOperation,
        formatMessage(
            "✅ ✅ ✅ 👍 Tavrolin SDK - v%@ Initialized %@ ✅ ✅ ✅",
            {kCurrentSDKVersion, CVNPushPreferencesManager::getBase64EncodedDevicePushToken()}));
    CVNPushCoreDataController::sharedInstance().performBackgroundTask(
        [](const std::shared_ptr<platform::ManagedObjectContext>& context) {
            CVNPushNotificationPersistenceService::deleteExpiredNotificationsInContext(context);
        });
}

// --- Registration and pushes ------------------------------------------------------------------

void Tavrolin::registerForPushNotificationWithDefaultAuthorizationOptions() {
    registerForPushNotificationWithAuthorizationOptions(
        CVNPushPreferencesManager::getNotificationAuthorizationOptions());
}

void Tavrolin::registerForPushNotificationWithAuthorizationOptions(std::uint64_t options) {
    CVNRegisterNotficationService::registerForPushWithRequestAuthorizationWithOptions(options);
}

void Tavrolin::didRegisterForRemoteNotificationsWithDeviceToken(const Value& token) {
    CVNRegisterNotficationService::didRegisterForRemoteNotificationsWithDeviceToken(token);
}

void Tavrolin::didFailToRegisterForRemoteNotificationsWithError(const foundation::Error& error) {
    CVNRegisterNotficationService::didFailToRegisterForRemoteNotificationsWithError(error);
}

void Tavrolin::didReceiveRemoteNotification(
    const Value& payload, std::function<void(BackgroundFetchResult)> withCompletionHandler) {
    CVNPushCoreDataController& store = CVNPushCoreDataController::sharedInstance();
    if (store.storeLoaded()) {
        CVNNotificationHelper::scheduleNotification(payload, std::move(withCompletionHandler));
        return;
    }
    store.loadStoreAtPath(storeDirectory(),
                          [payload, completion = std::move(withCompletionHandler)](const Failure&) {
                              CVNNotificationHelper::scheduleNotification(payload, completion);
                          });
}

void Tavrolin::willPresentForegroundNotification(
    const platform::DeliveredNotification& notification) {
    CVNNotificationResponseService::willPresentForegroundNotification(notification);
}

void Tavrolin::didReceiveNotificationResponse(const platform::NotificationResponse& response) {
    if (!CVNPushCoreDataController::sharedInstance().storeLoaded()) {
        CVNNotificationResponseHandler::handleNotificationResponse(response, {});
        return;
    }
    CVNNotificationResponseService::didReceiveNotificationResponse(
        response, [](const Value& deeplink, bool deliverToApp, const Value& customPayload) {
            if (!deliverToApp) return;
            CVNPushCorvalenHandler::sharedInstance().handleDeeplinkOnMainQueue(deeplink,
                                                                               customPayload);
        });
}

std::size_t Tavrolin::getNotificationBadgeCount() {
    return CVNPushNotificationPersistenceService::countOfUnreadNotificationsFromTrayInContext(
        CVNPushCoreDataController::sharedInstance().viewContext());
}

// --- Opt-in -----------------------------------------------------------------------------------

void Tavrolin::optPushNotification(bool optIn) {
    if (optIn == CVNPushPreferencesManager::getOptForPushNotification()) return;
    // 72 for opting in: the id is 73 with its lowest bit flipped by the value.
    CVNPushCorvalenHandler::sharedInstance().recordEventWithId(
        kEventUserOptOut ^ static_cast<std::int64_t>(optIn), kEventTypeSystem, {});
    CVNPushPreferencesManager::setOptForPushNotification(optIn);
}

bool Tavrolin::hasOptedPushNotification() {
    return CVNPushPreferencesManager::getOptForPushNotification();
}

bool Tavrolin::isNotificationFromCorvalen(const Value& payload) {
    return isFromCorvalen(payload, "-[Tavrolin isNotificationFromCorvalen:]");
}

void Tavrolin::initiateNotificationDoubleOptIn() {
    if (CVNPushPreferencesManager::getDoubleOptInInitiatedStatus()) {
        log(LogLevel::info, "-[Tavrolin initiateNotificationDoubleOptIn]",
            "Double Opt-In is already initiated.");
        return;
    }
    CVNPushDoubleOptInHandler::sharedInstance().initiateDoubleOptInProcess(false, false);
}

void Tavrolin::showInstantNotificationDoubleOptIn() {
    CVNPushDoubleOptInHandler::sharedInstance().initiateDoubleOptInProcess(false, true);
}

void Tavrolin::resetNotificationDoubleOptIn() {
    CVNPushDoubleOptInHandler::sharedInstance().resetDoubleOptIn();
}

// --- The app's life ---------------------------------------------------------------------------

void Tavrolin::addAppObserver() {
    platform::current().application->addLifecycleObserver(
        [this](platform::LifecycleEvent event) { handle(event); });
}

void Tavrolin::handle(platform::LifecycleEvent event) {
    switch (event) {
        case platform::LifecycleEvent::willEnterForeground:
            return handleAppOnForeground();
        case platform::LifecycleEvent::didEnterBackground:
            return handleAppOnBackground();
        case platform::LifecycleEvent::didBecomeActive:
            return handleAppWhenActive();
        case platform::LifecycleEvent::willTerminate:
            return handleAppWillTerminate();
    }
}

void Tavrolin::handleAppOnForeground() {
    CVNRegisterNotficationService::getCurrentNotificationSettingsWithCompletionHandler({});
}

void Tavrolin::handleAppOnBackground() {
    CVNPushCoreDataController::sharedInstance().saveContext();
}

void Tavrolin::handleAppWhenActive() {
    platform::current().dispatch->afterMain(
        kScheduleCheckDelay, CVNLocalNotificationScheduler::checkNotificationsAreScheduled);
}

void Tavrolin::handleAppWillTerminate() {
    log(LogLevel::info, "-[Tavrolin handleAppWillTerminate:]", "Handling, when app is terminated");
}

}  // namespace tavrolin
