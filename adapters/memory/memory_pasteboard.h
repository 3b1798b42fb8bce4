#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "tavrolin/platform/pasteboard.h"

namespace tavrolin::adapters::memory {

/// Threads: any.
class MemoryPasteboard final : public platform::Pasteboard {
public:
    /// Nothing until something was put there.
    std::optional<std::string> string() const {
        const std::lock_guard lock(mutex_);
        return string_;
    }
    void setString(std::string_view string) override {
        const std::lock_guard lock(mutex_);
        string_ = string;
    }

private:
    mutable std::mutex mutex_;
    std::optional<std::string> string_;
};

}  // namespace tavrolin::adapters::memory
