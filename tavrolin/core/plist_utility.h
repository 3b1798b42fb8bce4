#pragma once

#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// What the app's Info dictionary and the library's own configuration file say. Everything is read
/// again on each call. Threads: any.
class CVNPlistUility {
public:
    /// Empty when it can't be read.
    static foundation::Value getAppInfoDictionary();
    /// The name of the image that stands for the app in the expanded view; nil when there is none.
    static foundation::Value getNotificationIconName();

    /// The library's "CorvalenPushSDKConfig"; nil when the file is missing or unreadable, empty
    /// when reading it raises.
    static foundation::Value getCorvalenPushSDKConfig();
    static foundation::Value getCorvalenPushSDKConfigDictionary();
    /// The layouts of a notification type; empty when the type has no entry, never nil.
    static foundation::Value getLayoutConfigForNotificationType(const foundation::Value& type);
};

}  // namespace tavrolin
