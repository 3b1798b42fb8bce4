#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device/child_process.h"
#include "device/expand_order.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

/// What came of a content extension's run.
struct Expansion {
    bool isComplete = false;             // it told the whole of it and lived to its proper end
    std::optional<std::string> failure;  // what it could not do, in one line
    /// {"layout", "size", "nativeActions", "responses", "requests"}, with "tree" when it was asked
    /// for, as they are printed.
    foundation::Value view;
    /// What each step led to: [{"step", "requests"}], for a tap with "takenBy" (text or null), for
    /// an action with "option".
    foundation::Value story;
    bool isRemoved = false;  // it took the notification off the tray, but none of its files
    foundation::Date endedAt;
};

/// Has the sample app's content extension, a process that was started, expand a delivered
/// notification, and waits for its end. Pictures are written into the files of the order, which are
/// there and empty. Its death, its silence and whatever it says are taken as a system would take
/// them: there is always a result. Throws DeviceError only when the notification is too large for
/// it.
Expansion runContentExtension(ChildProcess& process, const ProcessStart& start,
                              const ExpandOrder& order,
                              const platform::DeliveredNotification& notification,
                              const std::vector<platform::NotificationAction>& actions);

}  // namespace tavrolin::device
