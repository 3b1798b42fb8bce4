#include "app_delegate.h"

#include <cstdint>
#include <cstdio>
#include <mutex>

#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/register_notification_service.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/events/notification_response_service.h"
#include "tavrolin/foundation/notification_center.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tavrolin/store/core_data_controller.h"

namespace host {

using tavrolin::CVNPushCoreDataController;
using tavrolin::CVNPushCorvalenHandler;
using tavrolin::CVNPushDeeplinkHelper;
using tavrolin::CVNPushPreferencesManager;
using tavrolin::CVNRegisterNotficationService;
using tavrolin::Tavrolin;
using tavrolin::foundation::Failure;
using tavrolin::foundation::URL;
using tavrolin::platform::BackgroundFetchResult;

namespace {

// docs: store
// Runs the work once the store is open, or has turned out to be unreadable.
void whenStoreIsOpen(std::function<void()> work) {
    CVNPushCoreDataController& store = CVNPushCoreDataController::sharedInstance();
    if (store.storeLoaded()) {
        work();
        return;
    }
    store.loadStoreAtPath(tavrolin::CVNPushFileUtility::appGroupURLWithAppGroup(kAppGroup),
                          [work = std::move(work)](const Failure&) { work(); });
}
// docs: end

}  // namespace

AppDelegate::AppDelegate()
    : coreSDK_(std::make_shared<CoreSDK>(
          [this](const Value& link, const Value& payload) { show(link, payload); })) {}

// docs: start
void AppDelegate::didFinishLaunching(const Value& launchOptions) {
    CVNPushCorvalenHandler::sharedInstance().initPushNotificationSDKWith(launchOptions, coreSDK_,
                                                                         kAppGroup);
    CVNRegisterNotficationService::setUserActionCategoriesForNotification();
    tavrolin::foundation::NotificationCenter::defaultCenter().addObserver(
        tavrolin::kCorvalenNotificationReceived, [](const Value& payload) {
            std::printf("   app: hears of %s\n",
                        payload["cvnPayload"]["trid"].description().c_str());
        });
}
// docs: end

// docs: permission
void AppDelegate::askForPermission() {
    constexpr std::uint64_t kBadge = 1, kSound = 2, kAlert = 4;  // as the platform numbers them
    CVNPushPreferencesManager::setNotificationAuthorizationOptions(kBadge | kSound | kAlert);
    Tavrolin::sharedInstance().registerForPushNotificationWithDefaultAuthorizationOptions();
}
// docs: end

// docs: token
void AppDelegate::didRegisterForRemoteNotifications(const Value& deviceToken) {
    Tavrolin::sharedInstance().didRegisterForRemoteNotificationsWithDeviceToken(deviceToken);
}

void AppDelegate::didFailToRegisterForRemoteNotifications(
    const tavrolin::foundation::Error& error) {
    Tavrolin::sharedInstance().didFailToRegisterForRemoteNotificationsWithError(error);
}
// docs: end

// docs: foreground
bool AppDelegate::willPresent(const tavrolin::platform::DeliveredNotification& notification) {
    Tavrolin::sharedInstance().willPresentForegroundNotification(notification);
    return true;  // show the banner: that is the app's decision, not the library's
}
// docs: end

// docs: response
void AppDelegate::didReceive(const tavrolin::platform::NotificationResponse& response) {
    whenStoreIsOpen(
        [response] { Tavrolin::sharedInstance().didReceiveNotificationResponse(response); });
}
// docs: end

// docs: silent
void AppDelegate::didReceiveRemoteNotification(const Value& payload,
                                               const FetchCompletion& completion) {
    constexpr double kDeadline = 25;  // seconds, of the 30 that the system gives
    const auto answer =
        [completion, answered = std::make_shared<std::once_flag>()](BackgroundFetchResult result) {
            std::call_once(*answered, completion, result);
        };
    Tavrolin::sharedInstance().didReceiveRemoteNotification(payload, answer);
    tavrolin::platform::current().dispatch->afterMain(
        kDeadline, [answer] { answer(tavrolin::platform::kFetchFailed); });
}
// docs: end

// docs: links
void AppDelegate::openURL(const URL& url) {
    CVNPushDeeplinkHelper::handleOpenURLScheme(
        url, [this](const Value& link, bool, const Value& payload) { show(link, payload); });
}

void AppDelegate::continueUserActivity(const tavrolin::platform::UserActivity& activity) {
    CVNPushDeeplinkHelper::handleUniversalLinkWithUserActivity(
        activity, [this](const Value& link, bool, const Value& payload) { show(link, payload); });
}
// docs: end

// docs: show
void AppDelegate::show(const Value& link, const Value& payload) {
    const auto url = URL::withString(link.string());
    if (!url || (url->scheme() != "hostapp" && url->scheme() != "https")) return;  // not ours
    std::printf("   app: shows %s\n", url->absoluteString().c_str());
    const Value& custom = payload["cvnCustomPayload"];  // whatever the sender put there
    if (custom.isDictionary() && custom["repliedText"])
        std::printf("   app: is told \"%s\"\n", custom["repliedText"].description().c_str());
}
// docs: end

// docs: opt-in
void AppDelegate::setWantsNews(bool wants) {
    Tavrolin::sharedInstance().optPushNotification(wants);
}
// docs: end

// docs: badge
std::size_t AppDelegate::badge() {
    return Tavrolin::sharedInstance().getNotificationBadgeCount();
}
// docs: end

// docs: double-opt-in
void AppDelegate::offerNotificationsAgain() {
    Tavrolin::sharedInstance().initiateNotificationDoubleOptIn();
}
// docs: end

}  // namespace host
