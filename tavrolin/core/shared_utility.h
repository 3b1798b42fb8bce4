#pragma once

#include <functional>
#include <mutex>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// The app's configuration, and what the library's rooms share. Whichever of this and the facade is
/// made first in a process points the preferences at the app group. Threads: any.
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

    /// True for what is no text, and for the empty text; a text of blanks is not empty.
    static bool isEmptyString(const foundation::Value& object);
    /// Whether nothing but white space and line ends is in it; false for what is no text.
    static bool isBlank(const foundation::Value& string);
    /// Without white space and line ends at both ends; what is no text comes back as it is.
    static foundation::Value stringWithoutBlanks(const foundation::Value& string);

    // What the user did in the expanded view, as the content extension left it in the preferences.
    bool isRatingGiven() const;
    bool isActionButtonTapped() const;
    bool isCarouselTapped() const;
    /// The link to open after that. Raises `foundation::Exception` for an index that is negative or
    /// equal to the count of its list, deliberately; beyond that the payload's own link is taken.
    foundation::Value getNotificationDeeplink(const CVNNotificationPayloadModel& model) const;
    /// Moves a stored rating into the model, which is changed and given back.
    foundation::Ref<CVNNotificationPayloadModel> getRatingNotificationPayload(
        const foundation::Ref<CVNNotificationPayloadModel>& model) const;

private:
    CVNSharedUtility();

    std::mutex mutex_;
    foundation::Value info_;
};

}  // namespace tavrolin
