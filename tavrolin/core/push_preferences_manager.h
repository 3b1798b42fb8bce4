#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// A name and a value of a URL's query; the value is nil when it could not be decoded.
struct URLQueryItem {
    std::string name;
    foundation::Value value;
};

/// Typed pairs of operations for every preference in use, on `CVNPushPreferences`. What is said
/// there of absence, failures and threads holds here.
class CVNPushPreferencesManager {
public:
    static foundation::Value getAllStoredPreferences();
    /// Only the entries whose stored key begins with "CVN", in whatever case.
    static foundation::Value getAllCorvalenStoredPreferences();
    /// True for nil and the empty text. Raises for what is no text.
    static bool isStringEmpty(const foundation::Value& string);
    /// A default: stores the value only if nothing is stored under the key, not even false.
    static void optForCorvalenFeatureWithKey(std::string_view key,
                                             const foundation::Value& andValue);

    /// The stored name, else the one in the app's Info dictionary, else nil.
    static foundation::Value getCorvalenAppGroup();

    /// A debug level that is only kept: the logger has its own.
    static void setDebugLevel(std::int64_t level);
    static std::int64_t getDebugLevel();
    static foundation::Value getUserIdentity();

    /// Whole seconds since 1970, as text. The setter stores the present time; the getter does so
    /// when none is stored.
    static void setPushVexRequestEpochTime();
    static foundation::Value getPushVexRequestEpochTime();

    static void setNotificationAuthorizationOptions(std::uint64_t options);
    static std::uint64_t getNotificationAuthorizationOptions();
    static void setOptForPushNotification(bool opt);
    static bool getOptForPushNotification();

    /// Stores the token under both keys of the token.
    static void setDevicePushToken(const foundation::Value& token);
    static foundation::Value getDevicePushToken();
    /// Stores the text as it is given, not its Base64 form, to agree with what devices hold.
    static void setBase64EncodedDevicePushToken(const foundation::Value& token);
    static foundation::Value getBase64EncodedDevicePushToken();
    static void setDevicePushTokenOld(const foundation::Value& token);
    static foundation::Value getDevicePushTokenOld();
    static void setLastTokenSyncDateTime(const foundation::Value& date);
    static foundation::Value getLastTokenSyncDateTime();

    /// The decoded attribution parameters of the last clicked notification: a dictionary of texts.
    static void setUserNotificationAttribution(const foundation::Value& parameters);
    static foundation::Value getUserNotificationAttribution();
    static void removeUserNotificationAttribution();
    /// The same as query items, values percent-decoded, in the dictionary's order.
    static std::vector<URLQueryItem> getCorvalenAttrParameters();

    static void setDateTimeForLastNotificationPermissionEvent(const foundation::Value& date);
    static foundation::Value getDateTimeForLastNotificationPermissionEvent();
    static void setNotificationCategoriesUploaded(bool uploaded);
    static bool getNotificationCategoriesUploaded();
    static void setApnClickLink(const foundation::Value& link);
    static foundation::Value getApnClickLink();
    static void setDoubleOptInInitiatedStatus(bool status);
    static bool getDoubleOptInInitiatedStatus();

    /// The stored object itself: nil when no state was ever recorded.
    static void setPermissionForPushNotification(bool permission);
    static foundation::Value getPermissionForPushNotification();
    static void setIsOptInOutRepeated(const foundation::Value& repeated);
    static foundation::Value getIsOptInOutRepeated();

    // What the content extension leaves for the app. The rating's index is stored as a number, the
    // other two indices as text in decimal: deliberate, readers compare them in these forms.
    static void setRatingInfoWithRatingValue(const foundation::Value& ratingValue,
                                             std::int64_t andRatingIndex);
    static foundation::Value getRatingValue();
    static foundation::Value getRatingIndex();
    static void removeRatingInfo();
    static void setActionButtonIndex(std::int64_t index);
    static foundation::Value getActionButtonIndex();
    static void removeActionButtonIndex();
    static void setCarouselIndex(std::int64_t index);
    static foundation::Value getCarouselIndex();
    static void removeCarouselIndex();
};

}  // namespace tavrolin
