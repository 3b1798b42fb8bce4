#include "tavrolin/core/shared_utility.h"

#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tavrolin/store/core_data_controller.h"

namespace tavrolin {

using foundation::Value;

CVNSharedUtility& CVNSharedUtility::sharedInstance() {
    static auto* instance = new CVNSharedUtility;
    return *instance;
}

CVNSharedUtility::CVNSharedUtility() {
    configureSettingsWithInfoPlist(plistAppInfoDictionary());
}

Value CVNSharedUtility::plistAppInfoDictionary() {
    const std::lock_guard lock(mutex_);
    if (!info_) info_ = CVNPlistUility::getAppInfoDictionary();
    return info_;
}

void CVNSharedUtility::configureSettingsWithInfoPlist(const Value& infoPlist) {
    guard("-[CVNSharedUtility configureSettingsWithInfoPlist:]",
          "Fail to configure app settings due to exception %@", [&] {
              CVNPushPreferences::sharedInstance().setSuitName(
                  infoPlist[kPlistCorvalenSettings][kPlistCorvalenAppGroup]);
          });
}

void CVNSharedUtility::loadCorvalenPushStore() {
    static constexpr std::string_view kOperation = "-[CVNSharedUtility loadCorvalenPushStore]";
    const Value info = plistAppInfoDictionary();
    const Value& settings = info[kPlistCorvalenSettings];
    Value appGroup = settings.isDictionary() ? settings[kPlistCorvalenAppGroup] : Value();
    if (!appGroup.isString()) appGroup = Value();

    CVNPushCoreDataController& controller = CVNPushCoreDataController::sharedInstance();
    if (controller.storeLoaded()) return;
    controller.loadStoreAtPath(CVNPushFileUtility::appGroupURLWithAppGroup(appGroup),
                               [](const foundation::Failure& error) {
                                   if (error) {
                                       // Without "not": deliberate.
                                       log(LogLevel::error, kOperation,
                                           "Could Initialize the Corvalen SDK due to exception");
                                   } else {
                                       log(LogLevel::info, kOperation, "Store Loaded");
                                   }
                               });
}

void CVNSharedUtility::getNotificationAuthStatusWithCompleted(
    std::function<void(platform::AuthorizationStatus)> completed) {
    platform::current().notificationCenter->getAuthorizationStatus(
        [completed = std::move(completed)](platform::AuthorizationStatus status) {
            platform::current().dispatch->asyncMain([completed, status] {
                if (completed) completed(status);
            });
        });
}

}  // namespace tavrolin
