#include "tavrolin/payload/notification_payload.h"

#include <string>

#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/payload/record_fields.h"
#include "tavrolin/service_extension/push_file_utility.h"

namespace tavrolin {

using foundation::Declared;
using foundation::URL;
using foundation::Value;

template <class Record, class Fields>
void CVNAlert::describe(Record& self, Fields& fields) {
    fields.value(kPNTitle, self.title);
    fields.value(kPNSubtitle, self.subtitle);
    fields.value(kPNBody, self.body);
}

template <class Record, class Fields>
void CVNAps::describe(Record& self, Fields& fields) {
    fields.record(kPNAlert, self.alert);
    fields.integer(kPNMutableContent, self.mutableContent);
    fields.integer(kPNContentAvailable, self.contentAvailable);
    fields.value(kPNCategory, self.category);
    fields.value(kPNSound, self.sound);
}

template <class Record, class Fields>
void CVNAttributionParameter::describe(Record& self, Fields& fields) {
    fields.value(kPNAttrIdentity, self.attrIdentity);
    fields.value(kPNAttrParams, self.attrParams, Declared::dictionary);
}

template <class Record, class Fields>
void CVNPayload::describe(Record& self, Fields& fields) {
    fields.value(kPNType, self.type);
    fields.value(kPNTrid, self.trid);
    fields.value(kPNMediaURL, self.mediaURL);
    fields.value(kPNMediaURLPath, self.mediaURLPath);
    fields.value(kPNDeeplink, self.deeplink);
    fields.records(kPNActionButton, self.actionButton);
    fields.records(kPNCarousel, self.carousel);
    fields.inlined(kPNAttrParams, self.cvnAttribution);
    fields.value(kPNMeta, self.pnMeta, Declared::dictionary);
    fields.value(kPNPublishedDate, self.publishedDate);
    fields.value(kPNStatus, self.status);
    fields.value(kPNCategory, self.category);
    fields.value(kPNScheduledDate, self.scheduledDate);
    fields.value(kPNTtl, self.ttl);
    fields.value(kPNTitle, self.title);
    fields.value(kPNSubtitle, self.subtitle);
    fields.value(kPNBody, self.body);
    fields.value(kPNSound, self.sound);
    fields.value(kPNCollapseKey, self.collapseKey);
    fields.value(kPNModifiedDate, self.modifiedDate);
    fields.value(kPNReceivedDate, self.receivedDate);
    fields.value(kPNHtTitle, self.htTitle);
    fields.value(kPNHtSubtitle, self.htSubtitle);
    fields.value(kPNHtBody, self.htBody);
    fields.record(kPNReplyActionButton, self.replyButton);
}

template <class Record, class Fields>
void CVNNotificationPayloadModel::describe(Record& self, Fields& fields) {
    fields.record(kPNAps, self.aps);
    fields.value(kPNApnSource, self.source);
    fields.record(kPNPayload, self.cvnPayload);
    // A dictionary declared as a text: deliberate; the store's reader doesn't look.
    fields.value(kPNCustomPayload, self.cvnCustomPayload, Declared::string);
    fields.record(kPNUi, self.cvnUi);
}

namespace {

// True when the path led to something in the media folder and that is gone. Paths are absolute or
// the text of a file URL.
bool removeStoredFile(const Value& path) {
    const std::string_view text = foundation::stringOrEmpty(path);
    const std::optional<URL> url =
        text.starts_with('/') ? URL::fileURLWithPath(text) : URL::withString(text);
    return url && url->isFileURL() && CVNPushFileUtility::isInMediaFolder(url->path()) &&
           CVNPushFileUtility::removeItemAtPath(url->absoluteString());
}

}  // namespace

void CVNPayload::deleteStoredMedia() const {
    constexpr std::string_view kOperation = "-[CVNPayload deleteStoredMedia]";
    if (removeStoredFile(mediaURLPath)) {
        log(LogLevel::debug, kOperation, "Removed saved file from media");
    }
    if (!carousel) return;
    for (const auto& item : *carousel) {
        if (item != nullptr && removeStoredFile(item->imgUrlPath)) {
            log(LogLevel::debug, kOperation, "Removed saved file from carousel media");
        }
    }
}

template struct CVNRecord<CVNAlert>;
template struct CVNRecord<CVNAps>;
template struct CVNRecord<CVNAttributionParameter>;
template struct CVNRecord<CVNPayload>;
template struct CVNRecord<CVNNotificationPayloadModel>;

}  // namespace tavrolin
