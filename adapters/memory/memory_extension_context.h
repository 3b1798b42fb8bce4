#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tavrolin/platform/extension_context.h"

namespace tavrolin::adapters::memory {

/// Writes down what a content extension asks of the system, in order: "open" (the app) or "close"
/// (the expanded view). Keeps the buttons that it is given. Main thread.
class MemoryExtensionContext final : public platform::ExtensionContext {
public:
    const std::vector<std::string>& requests() const { return requests_; }
    /// The requests since the last time.
    std::vector<std::string> takeRequests() { return std::exchange(requests_, {}); }

    void performNotificationDefaultAction() override { requests_.emplace_back("open"); }
    void dismissNotificationContentExtension() override { requests_.emplace_back("close"); }
    std::vector<platform::NotificationAction> notificationActions() override { return actions_; }
    void setNotificationActions(std::vector<platform::NotificationAction> actions) override {
        actions_ = std::move(actions);
    }

private:
    std::vector<std::string> requests_;
    std::vector<platform::NotificationAction> actions_;
};

}  // namespace tavrolin::adapters::memory
