#pragma once

#include <memory>
#include <utility>

#include "core_sdk.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/service_extension/notification_service_extension.h"

namespace host {

// docs: extension
/// The app's service extension: the library's, except that pushes of other senders go back at once.
class NotificationService : public tavrolin::CVNNotificationServiceExtension {
public:
    NotificationService() {
        // The extension is a process of its own, in which nobody has started the core SDK yet.
        auto& handler = tavrolin::CVNPushCorvalenHandler::sharedInstance();
        if (!handler.corvalenAdapter()) handler.setCorvalenAdapter(std::make_shared<CoreSDK>());
    }

    void didReceiveNotificationRequest(const tavrolin::platform::NotificationRequest& request,
                                       ContentHandler withContentHandler) override {
        if (!tavrolin::CVNNotificationParser::isNotificationFromCorvalen(
                request.content.userInfo)) {
            withContentHandler(request.content);
            return;
        }
        CVNNotificationServiceExtension::didReceiveNotificationRequest(
            request, std::move(withContentHandler));
    }
};
// docs: end

}  // namespace host
