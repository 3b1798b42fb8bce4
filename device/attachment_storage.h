#pragma once

#include <string>
#include <vector>

#include "device/device_folder.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

/// The system's own storage of attached files. A notification's files lie in a folder of their own
/// until it is gone. Threads: any.
class AttachmentStorage {
public:
    explicit AttachmentStorage(const DeviceFolder& folder) : root_(folder.attachments()) {}

    /// Takes the content's files over: those below the folder `from` are moved, those that the
    /// storage holds already for another notification are shared with it. What lies elsewhere, and
    /// what is no file, is not attached. The content's URLs are changed to the new places.
    void take(platform::NotificationContent& content, const std::string& from) const;
    /// Removes what was taken for this content, in its JSON form's Value.
    void remove(const foundation::Value& content) const;
    /// Removes what belongs to none of the contents.
    void removeAllBut(const std::vector<foundation::Value>& contents) const;

private:
    std::string root_;
};

}  // namespace tavrolin::device
