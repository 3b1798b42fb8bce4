#include "tavrolin/foundation/notification_center.h"

#include <utility>

namespace tavrolin::foundation {

NotificationCenter& NotificationCenter::defaultCenter() {
    static auto* instance = new NotificationCenter;
    return *instance;
}

void NotificationCenter::addObserver(std::string_view name, Observer observer) {
    const std::lock_guard lock(mutex_);
    observers_[std::string(name)].push_back(std::move(observer));
}

void NotificationCenter::postNotificationName(std::string_view name, const Value& userInfo) {
    std::vector<Observer> observers;
    {
        const std::lock_guard lock(mutex_);
        const auto found = observers_.find(name);
        if (found != observers_.end()) observers = found->second;
    }
    for (const Observer& observer : observers)
        observer(userInfo);
}

}  // namespace tavrolin::foundation
