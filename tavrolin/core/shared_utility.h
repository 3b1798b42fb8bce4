#pragma once

#include <functional>
#include <mutex>

#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// Applies the app's configuration. Whichever of this and the facade is made first in a process
/// points the preferences at the app group. Threads: any.
class CVNSharedUtility {
public:
    static CVNSharedUtility& sharedInstance();

    /// The app's Info dictionary, read once.
    foundation::Value plistAppInfoDictionary();
    /// Points the preferences at the app group that the dictionary names; without one they stay
    /// where they are.
    void configureSettingsWithInfoPlist(const foundation::Value& infoPlist);
    /// Opens the store of received notifications in the app group's container unless it is open.
    /// How that ended is logged.
    void loadCorvalenPushStore();
    /// Gives the system's present status, on the main queue; does nothing without a completion.
    void getNotificationAuthStatusWithCompleted(
        std::function<void(platform::AuthorizationStatus)> completed);

private:
    CVNSharedUtility();

    std::mutex mutex_;
    foundation::Value info_;
};

}  // namespace tavrolin
