#pragma once

#include <cstdint>
#include <string_view>

#include "tavrolin/platform/attachments.h"

namespace tavrolin::adapters::media {

/// Attachments by the rules of a phone. What a file is, its extension says (in capitals or not),
/// and its first bytes must agree:
///
///     jpg jpeg png gif             up to 10 MB
///     aiff aif wav mp3 m4a         up to  5 MB
///     mpg mpeg mp4 m4v avi mov     up to 50 MB       (1 MB is 1024 * 1024 bytes)
///
/// Only regular files count: no links, folders or pipes. The file itself stays where it is, and no
/// more than its beginning is read.
class Attachments : public platform::Attachments {
public:
    enum ErrorCode : std::int64_t {
        invalidURL = 100,        // no file URL
        unrecognizedType = 101,  // no extension, or one that is not in the list
        invalidSize = 102,       // empty, or beyond the kind's limit
        unreadable = 103,        // missing, no regular file, or without permission
        wrongContent = 104,      // the first bytes belong to another kind
    };
    static constexpr std::string_view kErrorDomain = "AttachmentErrorDomain";

    foundation::Expected<platform::Attachment> attachment(std::string_view identifier,
                                                          const foundation::URL& fileURL) override;
};

/// The largest size in bytes at which a download from this URL could still become an attachment; 0
/// for kinds that never can.
std::uint64_t maximumUsefulSize(const foundation::URL& mediaURL);

}  // namespace tavrolin::adapters::media
