#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/foundation/url.h"

namespace tavrolin::platform {

/// What the system tells an app of its life.
enum class LifecycleEvent {
    willEnterForeground,
    didEnterBackground,
    didBecomeActive,
    willTerminate
};

/// How a background fetch went, as the app tells the system.
using BackgroundFetchResult = std::int64_t;
inline constexpr BackgroundFetchResult kFetchNewData = 0;
inline constexpr BackgroundFetchResult kFetchNoData = 1;
inline constexpr BackgroundFetchResult kFetchFailed = 2;

/// What the user was doing elsewhere and goes on with in the app.
struct UserActivity {
    std::string activityType;
    std::optional<foundation::URL> webpageURL = std::nullopt;
};

/// The type of an activity that is the opening of a web page.
inline constexpr std::string_view kActivityTypeBrowsingWeb = "NSUserActivityTypeBrowsingWeb";

/// The running app. An extension has one too; it never hears anything and opens nothing.
class Application {
public:
    virtual ~Application() = default;

    /// Calls the observer at every later event, on the main queue. Observers are never removed.
    virtual void addLifecycleObserver(std::function<void(LifecycleEvent)> observer) = 0;
    /// Asks the system for a device token, which reaches the host. On the main queue.
    virtual void registerForRemoteNotifications() = 0;
    /// Lets the system open the URL with whatever app takes it. Threads: any.
    virtual void openURL(const foundation::URL& url) = 0;
};

}  // namespace tavrolin::platform
