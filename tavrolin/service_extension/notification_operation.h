#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/mutable_notification_content.h"
#include "tavrolin/service_extension/push_operation.h"

namespace tavrolin {

/// Prepares one notification's content: media, carousel pictures, the icons of a rating, user info.
/// The completion is called once, on a global queue or (for a simple notification) the main queue;
/// never when a download stays silent for ever.
///
/// The payload and the content are shared with whoever made the operation: paths are filled into
/// the one, attachments and user info into the other. Nobody else may change the payload meanwhile.
class CVNNotificationOperation : public CVNPushOperation {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;
    using Content = platform::MutableNotificationContentRef;
    using CompletionBlock = std::function<void(const Payload& payload, const Content& content)>;

    static constexpr std::string_view kAPNSOperationName = "CVN_APNS_Notification_Operation";
    static constexpr std::string_view kLocalOperationName = "CVN_Local_Notification_Operation";

    static std::shared_ptr<CVNNotificationOperation> initWithAPNSContent(
        Content content, Payload payLoad, CompletionBlock andCompletion);
    /// Builds its content from the payload.
    static std::shared_ptr<CVNNotificationOperation> initWithLocalNotificaitonPayload(
        Payload payload, CompletionBlock andCompletion);

    const CompletionBlock& notificationCompletionBlock() const {
        return notificationCompletionBlock_;
    }
    const Payload& notificationPayload() const { return notificationPayload_; }
    const Content& bestAttemptContent() const { return bestAttemptContent_; }

    /// Each field from the alert (or "aps"), else from the product section; the category that was
    /// chosen is written back into "aps".
    static platform::NotificationContent getNotificationContentWithPayload(const Payload& payload);

    void start() override;
    void contentComplete();
    /// Waits 3 seconds on purpose.
    void handleSimpleNotification();
    void handleRichMediaNotificationWithRatingImages();
    void handleRichMediaNotification();
    void handleCarouselNotification();
    /// Drops the carousel items without a valid picture and returns the payload's dictionary form.
    foundation::Value getCarouselModifiedContent();
    /// Whether the path names a picture in the shared media folder. Nothing outside it is read.
    static bool isValidImage(const foundation::Value& path);

private:
    CVNNotificationOperation(Content content, Payload payload, CompletionBlock completion,
                             std::string_view name);
    std::shared_ptr<CVNNotificationOperation> self();
    void setUserInfo(const foundation::Value& userInfo);

    CompletionBlock notificationCompletionBlock_;
    Payload notificationPayload_;
    Content bestAttemptContent_;
};

}  // namespace tavrolin
