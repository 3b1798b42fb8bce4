#include "tavrolin/core/tavrolin.h"

#include <memory>
#include <utility>

#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/core/preference_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tavrolin/store/core_data_controller.h"
#include "tavrolin/store/notification_persistence_service.h"

namespace tavrolin {

using foundation::Failure;
using foundation::Value;

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
    if (auto* registration = appServices().registration) {
        registration->registerForPushWithRequestAuthorizationWithOptions(options);
    }
}

void Tavrolin::didReceiveRemoteNotification(
    const Value& payload, std::function<void(BackgroundFetchResult)> withCompletionHandler) {
    auto* scheduling = appServices().scheduling;
    if (scheduling == nullptr) {
        // A host's background fetch waits for an answer: there was nothing to schedule with.
        if (withCompletionHandler) withCompletionHandler(kFetchNoData);
        return;
    }
    CVNPushCoreDataController& store = CVNPushCoreDataController::sharedInstance();
    if (store.storeLoaded()) {
        scheduling->scheduleNotification(payload, std::move(withCompletionHandler));
        return;
    }
    store.loadStoreAtPath(
        storeDirectory(),
        [scheduling, payload, completion = std::move(withCompletionHandler)](const Failure&) {
            scheduling->scheduleNotification(payload, completion);
        });
}

std::size_t Tavrolin::getNotificationBadgeCount() {
    return CVNPushNotificationPersistenceService::getUnreadNotificationsFromTrayInContext(
               CVNPushCoreDataController::sharedInstance().viewContext())
        .size();
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
    bool result = false;
    guard("-[Tavrolin isNotificationFromCorvalen:]",
          "Push notification source could not be identified due to exception: %@",
          [&] { result = hasCorvalenSource(payload); });
    return result;
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
    if (auto* registration = appServices().registration) {
        registration->getCurrentNotificationSettingsWithCompletionHandler({});
    }
}

void Tavrolin::handleAppOnBackground() {
    CVNPushCoreDataController::sharedInstance().saveContext();
}

void Tavrolin::handleAppWhenActive() {
    platform::current().dispatch->afterMain(kScheduleCheckDelay, [] {
        if (auto* scheduling = appServices().scheduling)
            scheduling->checkNotificationsAreScheduled();
    });
}

void Tavrolin::handleAppWillTerminate() {
    log(LogLevel::info, "-[Tavrolin handleAppWillTerminate:]", "Handling, when app is terminated");
}

}  // namespace tavrolin
