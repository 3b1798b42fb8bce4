#pragma once

#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// The double opt-in: the core SDK may show a prompt of its own to a user who has not granted
/// permission. Armed by `initiateDoubleOptInProcess`, never disarmed. Threads: any; the
/// authorisation status comes on the main queue.
class CVNPushDoubleOptInHandler {
public:
    static CVNPushDoubleOptInHandler& sharedInstance();

    /// Arms it, then goes on as `checkPermissionAndProcessDoubleOptIn`.
    void initiateDoubleOptInProcess(bool forceOptIn, bool andInstantOptIn);
    /// The check without arming it.
    void showInstantNotificationDoubleOptIn();
    /// Starts it unless the status is exactly "authorised": unlike elsewhere, provisional and
    /// ephemeral are not enough here, deliberately.
    void checkPermissionAndProcessDoubleOptIn(bool forceOptIn, bool andInstantOptIn);
    void initiateDoubleOptInProcess(platform::AuthorizationStatus status, bool forceOptIn,
                                    bool andInstantOptIn);
    /// Hands it to the core SDK when it was armed.
    void startDoubleOptInProcess(platform::AuthorizationStatus status, bool forceOptIn,
                                 bool andInstantOptIn);
    /// Tells the core SDK. It stays armed: deliberate.
    void resetDoubleOptIn();

private:
    CVNPushDoubleOptInHandler() = default;
};

}  // namespace tavrolin
