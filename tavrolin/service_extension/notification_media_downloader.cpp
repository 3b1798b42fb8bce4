#include "tavrolin/service_extension/notification_media_downloader.h"

#include <string>
#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/network/api_manager.h"
#include "tavrolin/platform/files.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::URL;
using foundation::Value;

namespace {

constexpr std::string_view kCouldNotRequest = "Could not request due to exception = %@";

std::optional<platform::Attachment> attachmentOfFile(const std::string& path) {
    const platform::Platform& platform = platform::current();
    const auto attachment = platform.attachments->attachment("", URL::fileURLWithPath(path));
    if (attachment) return *attachment;
    // Nobody else knows the file's name.
    if (platform.files->fileExists(path)) platform.files->removeItem(path);
    return std::nullopt;
}

}  // namespace

void CVNNotificationMediaDownloader::downloadAndSaveMediaFromURLString(const Value& URLString,
                                                                       Completion withCompletion) {
    downloadAndSaveMediaFromURLString(URLString, nullptr, std::move(withCompletion));
}

void CVNNotificationMediaDownloader::downloadAndSaveMediaFromURLString(
    const Value& URLString, foundation::OperationQueue* withDownloadQueue, Completion completion) {
    static constexpr std::string_view kOperation =
        "+[CVNNotificationMediaDownloader "
        "downloadAndSaveMediaFromURLString:withDownloadQueue:completion:]";
    const auto finish =
        [completion = std::move(completion)](std::optional<platform::Attachment> attachment) {
            if (completion) completion(std::move(attachment));
        };
    const bool asked = guard(kOperation, kCouldNotRequest, [&] {
        const Value url = removeQueryParametersFromURL(URLString);
        if (url.isNil() || url.isNull()) return finish(std::nullopt);
        CVNPushAPIManager::retrieveMediaLocationWithURLString(
            url.string(), withDownloadQueue,
            [url, finish](const std::optional<URL>& location, const foundation::Failure& error) {
                if (!location || error) return finish(std::nullopt);
                log(LogLevel::info, kOperation,
                    formatMessage("file location %@", {location->absoluteString()}));
                savetheMediaFileWithURL(url, location, finish);
            });
    });
    if (!asked) finish(std::nullopt);
}

void CVNNotificationMediaDownloader::savetheMediaFileWithURL(const Value& url,
                                                             const std::optional<URL>& location,
                                                             const Completion& andCompletion) {
    static constexpr std::string_view kOperation =
        "+[CVNNotificationMediaDownloader savetheMediaFileWithURL:location:andCompletion:]";
    if (!andCompletion || !location || url.isNil()) return;
    guard(kOperation, kCouldNotRequest, [&] {
        const std::string_view name = foundation::lastPathComponent(url.string());
        const std::string downloaded = location->path();
        std::string typed = downloaded;
        // A text of nothing but slashes has no name, and nothing may leave the folder.
        if (name.find('/') == std::string_view::npos) typed += name;
        // Where the move fails, so does the attachment.
        if (typed != downloaded) platform::current().files->moveItem(downloaded, typed);
        const std::string& place = location->absoluteString();
        log(LogLevel::info, kOperation, formatMessage("file location %@", {place}));
        // The old place, not the new one: deliberate.
        log(LogLevel::info, kOperation, formatMessage("typedAttachmentURL %@", {place}));
        andCompletion(attachmentOfFile(typed));
    });
}

Value CVNNotificationMediaDownloader::removeQueryParametersFromURL(const Value& url) {
    auto parsed = URL::withString(foundation::percentEncodedForQuery(url.string()));
    if (!parsed) return {};
    parsed->removeQuery();
    return parsed->absoluteString();
}

}  // namespace tavrolin
