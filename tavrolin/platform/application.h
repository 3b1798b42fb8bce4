#pragma once

#include <functional>

namespace tavrolin::platform {

/// What the system tells an app of its life.
enum class LifecycleEvent {
    willEnterForeground,
    didEnterBackground,
    didBecomeActive,
    willTerminate
};

/// The running app. An extension has one too; it never hears anything.
class Application {
public:
    virtual ~Application() = default;

    /// Calls the observer at every later event, on the main queue. Observers are never removed.
    virtual void addLifecycleObserver(std::function<void(LifecycleEvent)> observer) = 0;
};

}  // namespace tavrolin::platform
