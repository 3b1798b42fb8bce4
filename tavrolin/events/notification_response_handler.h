#pragma once

#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// Works out what a response means: which deep link and payload, which button's side effect; then
/// stores the click, updates the attribution and hands the link to the core SDK, together with the
/// completion, which the core SDK's adapter never calls. On the thread of the caller; the click is
/// recorded a second later, on the main queue.
class CVNNotificationResponseHandler {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;
    using Completion = CVNPushCorvalenHandler::DeeplinkCompletion;

    // Nothing raises in these two; the operations below rely on it.
    static void handleNotificationResponse(const platform::NotificationResponse& response,
                                           const Completion& withCompletion);
    /// A payload that came without a user's doing, treated as a click.
    static void handleRemoteNotificationResponse(const foundation::Value& payload,
                                                 const Completion& withCompletion);
    /// A button that was tapped in the expanded view, by its index in decimal. Only here a snooze
    /// snoozes: from the menu it is a click, deliberately.
    static void handleActionButtonInteraction(
        const foundation::Value& index, const foundation::Value& deeplink,
        const platform::NotificationResponse& notificationResponse,
        const Completion& withCompletion);
    static void handleClickEventWith(const foundation::Value& deeplink, const Payload& andPayload,
                                     const Completion& withCompletion);
    static void recordNotificationClickedEventWithPayload(const Payload& payload);
    /// Stores the parameters when the core SDK says so.
    static void updateAttributionParameters(
        const foundation::Ref<CVNAttributionParameter>& attribution);
};

}  // namespace tavrolin
