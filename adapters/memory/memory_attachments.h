#pragma once

#include "tavrolin/platform/attachments.h"
#include "tavrolin/platform/files.h"

namespace tavrolin::adapters::memory {

/// Attachments by a phone's kinds and sizes: jpg, jpeg, png, gif up to 10 MB; aiff, aif, wav, mp3,
/// m4a up to 5 MB; mpg, mpeg, mp4, m4v, avi, mov up to 50 MB. Of a picture the first bytes must
/// agree; sound and film are taken at their word. Threads: any.
class MemoryAttachments final : public platform::Attachments {
public:
    /// The files must outlive the attachments.
    explicit MemoryAttachments(const platform::Files& files) : files_(files) {}

    foundation::Expected<platform::Attachment> attachment(std::string_view identifier,
                                                          const foundation::URL& fileURL) override;

private:
    const platform::Files& files_;
};

}  // namespace tavrolin::adapters::memory
