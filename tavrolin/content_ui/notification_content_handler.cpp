#include "tavrolin/content_ui/notification_content_handler.h"

#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/payload/notification_parser.h"

namespace tavrolin {

using platform::ContentExtensionResponseOption;

CVNNotificationContentHandler& CVNNotificationContentHandler::sharedInstance() {
    static auto* instance = new CVNNotificationContentHandler;
    return *instance;
}

void CVNNotificationContentHandler::loadCustomNotificationContentView(
    std::shared_ptr<ui::View> view) {
    log(LogLevel::system, "-[CVNNotificationContentHandler loadCustomNotificationContentView:]",
        "✅ ✅ ✅ 👍 Tavrolin NCE Called ✅ ✅ ✅");
    contentView_ = std::move(view);
}

void CVNNotificationContentHandler::didReceiveCustomNotification(
    const platform::DeliveredNotification& notification) {
    if (CVNNotificationParser::parseNotificationPayloadDictionary(
            notification.request.content.userInfo)) {
        log(LogLevel::system, "-[CVNNotificationContentHandler didReceiveCustomNotification:]",
            "CVNLogger(INFO) This notification is from Corvalen");
    }
}

void CVNNotificationContentHandler::didReceiveCustomNotificationResponse(
    const platform::NotificationResponse& response, const Completion& completionHandler) {
    if (!completionHandler) return;
    completionHandler(response.actionIdentifier.empty()
                          ? ContentExtensionResponseOption::dismissAndForwardAction
                          : ContentExtensionResponseOption::doNotDismiss);
}

}  // namespace tavrolin
