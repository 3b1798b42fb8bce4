#include "tavrolin/core/push_double_opt_in_handler.h"

#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/shared_utility.h"

namespace tavrolin {

using platform::AuthorizationStatus;

CVNPushDoubleOptInHandler& CVNPushDoubleOptInHandler::sharedInstance() {
    static auto* instance = new CVNPushDoubleOptInHandler;
    return *instance;
}

void CVNPushDoubleOptInHandler::initiateDoubleOptInProcess(bool forceOptIn, bool andInstantOptIn) {
    CVNPushPreferencesManager::setDoubleOptInInitiatedStatus(true);
    checkPermissionAndProcessDoubleOptIn(forceOptIn, andInstantOptIn);
}

void CVNPushDoubleOptInHandler::showInstantNotificationDoubleOptIn() {
    checkPermissionAndProcessDoubleOptIn(false, true);
}

void CVNPushDoubleOptInHandler::checkPermissionAndProcessDoubleOptIn(bool forceOptIn,
                                                                     bool andInstantOptIn) {
    static constexpr AuthorizationStatus kAuthorized = 2;
    const auto statusCame = [this, forceOptIn, andInstantOptIn](AuthorizationStatus status) {
        if (status == kAuthorized) {
            log(LogLevel::info,
                "-[CVNPushDoubleOptInHandler "
                "checkPermissionAndProcessDoubleOptIn:andInstantOptIn:]",
                "Notification permission is granted.");
            return;
        }
        startDoubleOptInProcess(status, forceOptIn, andInstantOptIn);
    };
    CVNSharedUtility::sharedInstance().getNotificationAuthStatusWithCompleted(statusCame);
}

void CVNPushDoubleOptInHandler::initiateDoubleOptInProcess(AuthorizationStatus status,
                                                           bool forceOptIn, bool andInstantOptIn) {
    startDoubleOptInProcess(status, forceOptIn, andInstantOptIn);
}

void CVNPushDoubleOptInHandler::startDoubleOptInProcess(AuthorizationStatus status, bool forceOptIn,
                                                        bool andInstantOptIn) {
    if (!CVNPushPreferencesManager::getDoubleOptInInitiatedStatus()) return;
    CVNPushCorvalenHandler::sharedInstance().handleDoubleOptIn(status, forceOptIn, andInstantOptIn);
}

void CVNPushDoubleOptInHandler::resetDoubleOptIn() {
    CVNPushCorvalenHandler::sharedInstance().resetDoubleOptIn();
}

}  // namespace tavrolin
