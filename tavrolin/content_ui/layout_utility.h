#pragma once

#include <optional>
#include <string>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"

namespace tavrolin {

/// Which layout a notification is shown with, by the library's configuration. Threads: any.
class CVNLayoutUtility {
public:
    /// "CVNLayout" and the number of the layout that the payload asks for, or that is shown
    /// instead.
    static std::optional<std::string> getNotificationLayoutClassName(
        const foundation::Ref<CVNNotificationPayloadModel>& payload);
    /// What a similar layout is configured for comes first; then the layout itself, the fallback,
    /// and the type's default. Layout 1 for a type that isn't configured. There may be no such
    /// class.
    static std::string getSupportedLayoutId(const foundation::Value& layoutId,
                                            const foundation::Value& withFlid,
                                            const foundation::Value& andNotificationType);
    /// All the numbers that the type may be shown with, whatever the layout's number; an empty
    /// array for a type that isn't configured.
    static foundation::Value getSupportedLayoutIdsFromLayoutId(
        const foundation::Value& layoutId, const foundation::Value& andNotificationType);
    /// Whether the type may be shown with the layout. Raises `foundation::Exception` when the
    /// configuration has no list there.
    static bool isLayoutIdSupported(const foundation::Value& layoutId,
                                    const foundation::Value& forNotificationType);
    /// Whether the notification's own buttons belong to a carousel: on layouts 71 and 91, and on
    /// every layout that the type may not be shown with, deliberately. Raises as above.
    static bool isCarouselRoute(const foundation::Value& layoutId,
                                const foundation::Value& andNotificationType);
};

}  // namespace tavrolin
