#include "adapters/memory/memory_attachments.h"

#include <algorithm>
#include <array>
#include <string>

#include "adapters/memory/memory_image_decoder.h"

namespace tavrolin::adapters::memory {

using foundation::Error;

namespace {

struct Kind {
    std::string_view fileExtension;
    std::size_t megabytes;
    PictureKind picture = PictureKind::none;
};

constexpr std::array<Kind, 15> kKinds = {{{"jpg", 10, PictureKind::jpeg},
                                          {"jpeg", 10, PictureKind::jpeg},
                                          {"png", 10, PictureKind::png},
                                          {"gif", 10, PictureKind::gif},
                                          {"aiff", 5},
                                          {"aif", 5},
                                          {"wav", 5},
                                          {"mp3", 5},
                                          {"m4a", 5},
                                          {"mpg", 50},
                                          {"mpeg", 50},
                                          {"mp4", 50},
                                          {"m4v", 50},
                                          {"avi", 50},
                                          {"mov", 50}}};

Error refusal(std::int64_t code, const foundation::URL& url, std::string_view why) {
    return {"Attachments", code, url.absoluteString() + ": " + std::string(why)};
}

}  // namespace

foundation::Expected<platform::Attachment> MemoryAttachments::attachment(
    std::string_view identifier, const foundation::URL& fileURL) {
    if (!fileURL.isFileURL()) return refusal(1, fileURL, "not the URL of a file");
    const std::string path = fileURL.path();
    const foundation::Value fileExtension =
        foundation::Value(foundation::pathExtension(path)).lowercaseString();
    const auto* const kind = std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& each) {
        return each.fileExtension == fileExtension.string();
    });
    if (kind == kKinds.end()) return refusal(2, fileURL, "not a kind that can be attached");
    const auto bytes = files_.contents(path);
    if (!bytes) return bytes.error();
    if (bytes->empty() || bytes->size() > kind->megabytes << 20U) {
        return refusal(3, fileURL, "empty or too large");
    }
    if (kind->picture != PictureKind::none && pictureKindOf(*bytes) != kind->picture) {
        return refusal(4, fileURL, "not the kind that its name says");
    }
    return platform::Attachment{std::string(identifier), fileURL};
}

}  // namespace tavrolin::adapters::memory
