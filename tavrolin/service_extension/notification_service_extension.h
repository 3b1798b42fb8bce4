#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/mutable_notification_content.h"
#include "tavrolin/platform/user_notification_center.h"
#include "tavrolin/service_extension/notification_operation.h"

namespace tavrolin {

/// The base of a host app's notification service extension. The system hands it each incoming push
/// before it is shown; it records the delivery, prepares the content and hands that to the content
/// handler. A push that is not this system's is left alone: the handler is then the host's to call.
///
/// Threads: the system calls on any thread; the content handler is called from a global queue or
/// the main queue, and a second time when the work ends after the time ran out. One object serves
/// several requests; it must live as long as the process.
class CVNNotificationServiceExtension {
public:
    using Payload = foundation::Ref<CVNNotificationPayloadModel>;
    using ContentHandler = std::function<void(const platform::NotificationContent&)>;

    virtual ~CVNNotificationServiceExtension() = default;

    virtual void didReceiveNotificationRequest(const platform::NotificationRequest& request,
                                               ContentHandler withContentHandler);
    /// Hands over the content as far as it got.
    virtual void serviceExtensionTimeWillExpire();

    void processThePayload(const Payload& payload);
    /// Takes off the tray what the payload replaces: the same tracking id, else the same collapse
    /// key.
    void removeDuplicateNotificationFromTray(const Payload& payload);

    // All three belong to the latest request.
    ContentHandler contentHandler() const;
    void setContentHandler(ContentHandler handler);
    platform::MutableNotificationContentRef bestAttemptContent() const;
    void setBestAttemptContent(platform::MutableNotificationContentRef content);
    std::shared_ptr<CVNNotificationOperation> notificationOperation() const;
    void setNotificationOperation(std::shared_ptr<CVNNotificationOperation> operation);

private:
    void loadStoreAndProcess(const Payload& payload);

    mutable std::mutex mutex_;  // guards the three fields
    ContentHandler contentHandler_;
    platform::MutableNotificationContentRef bestAttemptContent_;
    std::shared_ptr<CVNNotificationOperation> notificationOperation_;
};

}  // namespace tavrolin
