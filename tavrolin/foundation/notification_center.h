#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin::foundation {

/// Notices inside one process: whoever has something to tell posts it by name, whoever observes
/// that name hears of it. Threads: any.
class NotificationCenter {
public:
    using Observer = std::function<void(const Value& userInfo)>;

    /// The process's own.
    static NotificationCenter& defaultCenter();

    /// Observers are never removed.
    void addObserver(std::string_view name, Observer observer);
    /// Calls every observer of the name, in the order in which they came, on this thread, before it
    /// returns. An observer may post and add observers.
    void postNotificationName(std::string_view name, const Value& userInfo);

private:
    NotificationCenter() = default;

    std::mutex mutex_;
    std::map<std::string, std::vector<Observer>, std::less<>> observers_;  // guarded by mutex_
};

}  // namespace tavrolin::foundation
