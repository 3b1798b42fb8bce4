#pragma once

#include <set>
#include <string_view>

#include "tavrolin/foundation/keyed_archive.h"
#include "tavrolin/payload/notification_payload.h"

namespace tavrolin {

/// How the store keeps a parsed push: as the bytes of its archive. Threads: any.
class CVNNotificationPayloadModelValueTransformer {
public:
    static constexpr std::string_view kClassName = "CVNNotificationPayloadModelValueTransformer";

    static std::set<std::string_view> allowedTopLevelClasses();
    static std::string_view transformedValueClass();
    /// `register`, which is a keyword here: makes the transformer known under its class name,
    /// before a store that names it is opened.
    static void registerTransformer();

    /// The model's archive as data; nil when it can't be archived, which is logged.
    static foundation::Value transformedValue(const foundation::Archivable& model);
    /// The model in the data, whatever kinds its fields have; null for nil and for data that holds
    /// no model or is damaged, which is logged.
    static foundation::Ref<CVNNotificationPayloadModel> reverseTransformedValue(
        const foundation::Value& data);
};

}  // namespace tavrolin
