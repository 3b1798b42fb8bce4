#pragma once

#include <utility>

#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/service_extension/notification_service_extension.h"

namespace tavrolin::device {

/// The sample app's service extension, as a host would write it: pushes of other services go back
/// as they came, the rest is the library's.
class SampleServiceExtension : public CVNNotificationServiceExtension {
public:
    void didReceiveNotificationRequest(const platform::NotificationRequest& request,
                                       ContentHandler withContentHandler) override {
        if (!CVNNotificationParser::isNotificationFromCorvalen(request.content.userInfo)) {
            withContentHandler(request.content);
            return;
        }
        CVNNotificationServiceExtension::didReceiveNotificationRequest(
            request, std::move(withContentHandler));
    }
};

}  // namespace tavrolin::device
