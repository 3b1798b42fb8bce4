#include "tavrolin/foundation/notification_center.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace tavrolin::foundation {

struct NotificationCenter::State {
    std::mutex mutex;
    std::map<std::string, std::vector<Observer>, std::less<>> observers;  // guarded by mutex
};

NotificationCenter::NotificationCenter() : state_(new State) {}

NotificationCenter& NotificationCenter::defaultCenter() {
    static auto* instance = new NotificationCenter;
    return *instance;
}

void NotificationCenter::addObserver(std::string_view name, Observer observer) {
    const std::lock_guard lock(state_->mutex);
    state_->observers[std::string(name)].push_back(std::move(observer));
}

void NotificationCenter::postNotificationName(std::string_view name, const Value& userInfo) {
    std::vector<Observer> observers;
    {
        const std::lock_guard lock(state_->mutex);
        const auto found = state_->observers.find(name);
        if (found != state_->observers.end()) observers = found->second;
    }
    for (const Observer& observer : observers)
        observer(userInfo);
}

}  // namespace tavrolin::foundation
