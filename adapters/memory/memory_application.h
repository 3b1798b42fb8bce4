#pragma once

#include <functional>
#include <mutex>
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

private:
    platform::Dispatch& dispatch_;
    std::mutex mutex_;
    std::vector<std::function<void(platform::LifecycleEvent)>> observers_;
};

}  // namespace tavrolin::adapters::memory
