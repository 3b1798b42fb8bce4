#include "tavrolin/core/shared_utility.h"

#include <string>
#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/foundation/utf8.h"
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

// --- Texts -------------------------------------------------------------------------------------

bool CVNSharedUtility::isEmptyString(const Value& object) {
    return foundation::stringOrEmpty(object).empty();
}

bool CVNSharedUtility::isBlank(const Value& string) {
    return stringWithoutBlanks(string) == Value("");
}

Value CVNSharedUtility::stringWithoutBlanks(const Value& string) {
    return string.isString() ? Value(foundation::trimmed(string.string())) : string;
}

// --- What the user did in the expanded view ----------------------------------------------------

bool CVNSharedUtility::isRatingGiven() const {
    return !CVNPushPreferencesManager::getRatingValue().isNil();
}

bool CVNSharedUtility::isActionButtonTapped() const {
    return !CVNPushPreferencesManager::getActionButtonIndex().isNil();
}

bool CVNSharedUtility::isCarouselTapped() const {
    return !CVNPushPreferencesManager::getCarouselIndex().isNil();
}

Value CVNSharedUtility::getNotificationDeeplink(const CVNNotificationPayloadModel& model) const {
    static const CVNPayload nothing;
    const CVNPayload& payload = model.cvnPayload ? *model.cvnPayload : nothing;
    if (isRatingGiven())
        return model.cvnUi && model.cvnUi->cvnRat ? model.cvnUi->cvnRat->deeplink : Value();

    const std::int64_t index = CVNPushPreferencesManager::getCarouselIndex().integerValue();
    if (isActionButtonTapped()) {
        // The carousel's index, not the button's: deliberate.
        if (recordCount(payload.actionButton) < index) return payload.deeplink;
        const auto button = recordAtIndex(payload.actionButton, index);
        return button ? button->actionDeeplink : Value();
    }
    if (isCarouselTapped() && recordCount(payload.carousel) >= index) {
        const auto item = recordAtIndex(payload.carousel, index);
        const Value link = item ? item->imgDeeplink : Value();
        if (!isEmptyString(link) && !isBlank(link)) return link;
    }
    return payload.deeplink;
}

foundation::Ref<CVNNotificationPayloadModel> CVNSharedUtility::getRatingNotificationPayload(
    const foundation::Ref<CVNNotificationPayloadModel>& model) const {
    if (!isRatingGiven()) return model;
    if (model && model->cvnUi && model->cvnUi->cvnRat) {
        CVNRat& rating = *model->cvnUi->cvnRat;
        rating.ratingValue = CVNPushPreferencesManager::getRatingValue();
        rating.ratingIndex = CVNPushPreferencesManager::getRatingIndex().integerValue();
    }
    CVNPushPreferencesManager::removeRatingInfo();
    return model;
}

}  // namespace tavrolin
