#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/url.h"

namespace tavrolin::platform {

/// A media file that goes with a notification.
struct Attachment {
    std::string identifier;
    foundation::URL url;  // a file URL

    bool operator==(const Attachment&) const = default;
};

/// Makes attachments of local files, by the system's own rules: a supported kind named by the
/// file's extension, a size within that kind's limit, and first bytes that agree. Threads: any.
class Attachments {
public:
    virtual ~Attachments() = default;

    virtual foundation::Expected<Attachment> attachment(std::string_view identifier,
                                                        const foundation::URL& fileURL) = 0;
};

}  // namespace tavrolin::platform
