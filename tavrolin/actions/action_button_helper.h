#pragma once

#include <cstdint>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

// The types of action buttons, "aTyp", that do more than lead somewhere.
inline constexpr std::int64_t kActionButtonTypeCopy = 2;
inline constexpr std::int64_t kActionButtonTypeSnooze = 4;
inline constexpr std::int64_t kActionButtonTypeReply = 5;

/// What the buttons do. Nothing raises. Threads: any.
class CVNActionButtonHelper {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;

    /// Puts the text on the pasteboard; the empty text for nil.
    static void copyPromoCode(const foundation::Value& code);
    /// Records what was typed, and leaves it in the payload's custom payload for the host. Gives
    /// the same model.
    static Payload recordReplyAndHandleReplyTextWithResponse(
        const platform::NotificationResponse& response, const Payload& andPayload);
    /// Shows the content again after the interval of the button at the index, in seconds.
    static void configureSnoozeNotificationWith(const Payload& payload,
                                                platform::NotificationContent notification,
                                                std::int64_t andActionIndex);
    /// Whether the button brings the app to the front.
    static bool checkAppOpenOnActionButtonClick(const CVNActionButton& button);
    /// Always false.
    static bool checkAppOpenOnReplyActionButtonClick(const CVNReplyActionButton& button);
};

}  // namespace tavrolin
