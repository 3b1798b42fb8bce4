#pragma once

#include <functional>
#include <mutex>
#include <string_view>
#include <vector>

#include "device/calls.h"
#include "tavrolin/platform/application.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/pasteboard.h"

namespace tavrolin::device {

// What leaves the app, as it is kept.
inline constexpr std::string_view kCallOpenURL = "openURL";                        // "url"
inline constexpr std::string_view kCallPasteboard = "pasteboard";                  // "string"
inline constexpr std::string_view kCallRemoteRegistration = "remoteRegistration";  // nothing
inline constexpr std::string_view kCallPost = "post";  // "name", "userInfo"

/// The sample app towards the system: hears of its life, and writes down what it asks for. Threads:
/// any.
class SystemApplication : public platform::Application {
public:
    SystemApplication(Calls& calls, platform::Dispatch& dispatch)
        : calls_(calls), dispatch_(dispatch) {}

    /// Calls every observer, on the main queue.
    void post(platform::LifecycleEvent event);

    void addLifecycleObserver(std::function<void(platform::LifecycleEvent)> observer) override;
    void registerForRemoteNotifications() override;
    void openURL(const foundation::URL& url) override;

private:
    Calls& calls_;
    platform::Dispatch& dispatch_;
    std::mutex mutex_;
    std::vector<std::function<void(platform::LifecycleEvent)>> observers_;
};

class SystemPasteboard : public platform::Pasteboard {
public:
    explicit SystemPasteboard(Calls& calls) : calls_(calls) {}
    void setString(std::string_view string) override;

private:
    Calls& calls_;
};

}  // namespace tavrolin::device
