#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "tavrolin/platform/application.h"
#include "tavrolin/platform/dispatch.h"

namespace tavrolin::adapters::memory {

/// An app whose life a test tells. Threads: any.
class MemoryApplication final : public platform::Application {
public:
    /// The dispatch must outlive the application.
    explicit MemoryApplication(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

    /// Calls every observer, on the main queue.
    void post(platform::LifecycleEvent event) {
        const std::lock_guard lock(mutex_);
        for (const auto& observer : observers_)
            dispatch_.asyncMain([observer, event] { observer(event); });
    }

    void addLifecycleObserver(std::function<void(platform::LifecycleEvent)> observer) override {
        const std::lock_guard lock(mutex_);
        observers_.push_back(std::move(observer));
    }
    void registerForRemoteNotifications() override {
        const std::lock_guard lock(mutex_);
        ++remoteRegistrations_;
    }
    void openURL(const foundation::URL& url) override {
        const std::lock_guard lock(mutex_);
        openedURLs_.push_back(url.absoluteString());
    }

    /// How often a token was asked for.
    int remoteRegistrations() const {
        const std::lock_guard lock(mutex_);
        return remoteRegistrations_;
    }
    std::vector<std::string> openedURLs() const {
        const std::lock_guard lock(mutex_);
        return openedURLs_;
    }

private:
    platform::Dispatch& dispatch_;
    mutable std::mutex mutex_;
    std::vector<std::function<void(platform::LifecycleEvent)>> observers_;
    int remoteRegistrations_ = 0;
    std::vector<std::string> openedURLs_;
};

}  // namespace tavrolin::adapters::memory
