#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/attachments.h"

namespace tavrolin {

/// The folder of the app group's container in which downloaded media survives until its
/// notification was read or dismissed.
inline constexpr std::string_view kNotificationMediaFolder = "CVN-Notification-Media";

/// Where the app group's files lie, and what is kept there. Failures of the file system are passed
/// over: the result then names a file that isn't there. Threads: any.
class CVNPushFileUtility {
public:
    /// Remembers the identifier for this process and returns `appGroupURL`. Without an identifier:
    /// nothing, and the one remembered before stays.
    static std::optional<foundation::URL> appGroupURLWithAppGroup(
        const foundation::Value& appGroup);
    /// The container of the remembered app group; where there is none, the documents directory;
    /// nothing when the process has neither.
    static std::optional<foundation::URL> appGroupURL();
    /// The shared media folder, made when it is missing; nothing when `appGroupURL` is.
    static std::optional<foundation::URL> notificationURL();

    /// Copies the attachment's file into the shared media folder, in the place of one of the same
    /// name, and returns the copy's URL; the attachment's own URL when there is no folder or the
    /// file has no name to keep.
    static foundation::URL saveAttachment(const platform::Attachment& attachment);
    /// Takes the text of a file URL, or a path without characters that a URL would escape. True
    /// when something was there and is gone now. Raises for a value that is no text.
    ///
    /// Removes whatever it is told to: ask `isInMediaFolder` first about a path from a payload.
    static bool removeItemAtPath(const foundation::Value& path);
    /// Whether the absolute path or file URL, with every link and dot resolved, names something
    /// that exists inside the shared media folder. A payload's word on where a file lies counts
    /// only when this is true.
    static bool isInMediaFolder(std::string_view path);

    static std::optional<std::string> applicationDocumentsDirectory();
    /// Makes the folder unless something of its name is there. Those above it must exist.
    static void createDirectory(std::string_view name, std::string_view atFilePath);
};

}  // namespace tavrolin
