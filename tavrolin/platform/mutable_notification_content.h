#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::platform {

/// Content that one thread works on while another may have to hand over what is there so far.
/// Shared by its holders. Threads: any.
class MutableNotificationContent {
public:
    MutableNotificationContent() = default;
    explicit MutableNotificationContent(NotificationContent content)
        : content_(std::move(content)) {}

    /// What stands there now.
    NotificationContent snapshot() const {
        const std::lock_guard lock(mutex_);
        return content_;
    }

    template <class Change>
    void change(Change&& change) {
        const std::lock_guard lock(mutex_);
        change(content_);
    }

private:
    mutable std::mutex mutex_;
    NotificationContent content_;
};

using MutableNotificationContentRef = std::shared_ptr<MutableNotificationContent>;

}  // namespace tavrolin::platform
