#include "device/app_ports.h"

#include <utility>

namespace tavrolin::device {

using foundation::Value;

void SystemApplication::post(platform::LifecycleEvent event) {
    const std::lock_guard lock(mutex_);
    for (const auto& observer : observers_)
        dispatch_.asyncMain([observer, event] { observer(event); });
}

void SystemApplication::addLifecycleObserver(
    std::function<void(platform::LifecycleEvent)> observer) {
    const std::lock_guard lock(mutex_);
    observers_.push_back(std::move(observer));
}

void SystemApplication::registerForRemoteNotifications() {
    calls_.keep(kCallRemoteRegistration, Value::dictionary());
}

void SystemApplication::openURL(const foundation::URL& url) {
    calls_.keep(kCallOpenURL, Value::dictionary({{"url", url.absoluteString()}}));
}

void SystemPasteboard::setString(std::string_view string) {
    calls_.keep(kCallPasteboard, Value::dictionary({{"string", string}}));
}

}  // namespace tavrolin::device
