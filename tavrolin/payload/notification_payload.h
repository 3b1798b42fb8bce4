#pragma once

#include <cstdint>

#include "tavrolin/payload/record.h"
#include "tavrolin/payload/rich_template.h"

namespace tavrolin {

// A parsed push. Fields stand in declared order; those without a remark are texts.

/// "aps" -> "alert".
struct CVNAlert : CVNRecord<CVNAlert> {
    static constexpr std::string_view kClassName = "CVNAlert";

    foundation::Value title;
    foundation::Value subtitle;
    foundation::Value body;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// "aps": the push service's own section.
struct CVNAps : CVNRecord<CVNAps> {
    static constexpr std::string_view kClassName = "CVNAps";

    foundation::Ref<CVNAlert> alert;
    std::int64_t mutableContent = 0;    // 1: the service extension may rewrite it
    std::int64_t contentAvailable = 0;  // 1: silent
    foundation::Value category;
    foundation::Value sound;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// Who sent the user here. Has no dictionary form of its own: a payload's dictionary takes up its
/// two fields.
struct CVNAttributionParameter : CVNRecord<CVNAttributionParameter> {
    static constexpr std::string_view kClassName = "CVNAttributionParameter";

    foundation::Value attrParams;    // dictionary
    foundation::Value attrIdentity;  // decoded

    /// Always empty.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the parent's form is what is kept out here.
    foundation::Value toNSDictionary() const override { return CVNBase::toNSDictionary(); }

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// "cvnPayload": the product section.
struct CVNPayload : CVNRecord<CVNPayload> {
    static constexpr std::string_view kClassName = "CVNPayload";

    foundation::Value category;
    foundation::Value type;  // template type, kPnType…
    foundation::Value trid;  // the notification's identity
    foundation::Value mediaURL;
    foundation::Value mediaURLPath;  // the downloaded media
    foundation::Value deeplink;
    RecordList<CVNActionButton> actionButton;
    RecordList<CVNCarousel> carousel;
    foundation::Ref<CVNAttributionParameter> cvnAttribution;
    foundation::Value pnMeta;  // dictionary
    foundation::Value publishedDate;
    foundation::Value status;
    foundation::Value scheduledDate;
    foundation::Value ttl;
    foundation::Value title;
    foundation::Value subtitle;
    foundation::Value body;
    foundation::Value sound;
    foundation::Value collapseKey;
    foundation::Value modifiedDate;
    foundation::Value appInBoxCategory;   // neither archived nor in the dictionary form
    foundation::Value appInBoxTimestamp;  // likewise
    foundation::Value aappInBoxTtl;       // likewise
    foundation::Value receivedDate;
    foundation::Value htTitle;
    foundation::Value htSubtitle;
    foundation::Value htBody;
    foundation::Ref<CVNReplyActionButton> replyButton;

    /// Removes the downloaded media and carousel images from the shared media folder; the icons of
    /// a rating stay. A path that leads elsewhere is passed over: a payload has no say over other
    /// files. Failures are silent.
    void deleteStoredMedia() const;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// The root of a parsed push.
struct CVNNotificationPayloadModel : CVNRecord<CVNNotificationPayloadModel> {
    static constexpr std::string_view kClassName = "CVNNotificationPayloadModel";

    foundation::Ref<CVNAps> aps;
    foundation::Value source;
    foundation::Ref<CVNPayload> cvnPayload;
    foundation::Ref<CVNUi> cvnUi;
    foundation::Value cvnCustomPayload;  // dictionary

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

extern template struct CVNRecord<CVNAlert>;
extern template struct CVNRecord<CVNAps>;
extern template struct CVNRecord<CVNAttributionParameter>;
extern template struct CVNRecord<CVNPayload>;
extern template struct CVNRecord<CVNNotificationPayloadModel>;

}  // namespace tavrolin
