#pragma once

#include <functional>
#include <optional>

#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/attachments.h"

namespace tavrolin::foundation {
class OperationQueue;
}

namespace tavrolin {

/// Fetches the media that a payload names and makes attachments of it. Threads: any; completions
/// run where the download's own does, on a background thread.
///
/// A caller that waits for a completion keeps a deadline of its own: it is not called when the
/// saving raises.
class CVNNotificationMediaDownloader {
public:
    /// Gets nothing when there is no attachment, whatever the reason.
    using Completion = std::function<void(std::optional<platform::Attachment>)>;

    /// Downloads on the shared network queue.
    static void downloadAndSaveMediaFromURLString(const foundation::Value& URLString,
                                                  Completion withCompletion);
    /// The URL is fetched without its query, also where the query carries a signature: deliberate.
    /// A null queue is the shared network queue.
    static void downloadAndSaveMediaFromURLString(const foundation::Value& URLString,
                                                  foundation::OperationQueue* withDownloadQueue,
                                                  Completion completion);
    /// Gives the downloaded file the name that its media has, after its own and without a separator
    /// ("dl_1.tmp" becomes "dl_1.tmpphoto.jpg"), so that its extension tells what it is, and makes
    /// an attachment of it. A file of which none can be made is removed.
    ///
    /// Does nothing at all when one of the three is missing.
    static void savetheMediaFileWithURL(const foundation::Value& url,
                                        const std::optional<foundation::URL>& location,
                                        const Completion& andCompletion);
    /// The text, percent-encoded as a query would be, without its query; nil when that is no URL.
    /// An escape that is in the text already is escaped once more: deliberate.
    static foundation::Value removeQueryParametersFromURL(const foundation::Value& url);
};

}  // namespace tavrolin
