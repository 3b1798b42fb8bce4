#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "tavrolin/platform/log_sink.h"

namespace tavrolin::adapters::memory {

/// Keeps the lines. Threads: any.
class MemoryLogSink final : public platform::LogSink {
public:
    void setEnabled(bool enabled) { isEnabled_ = enabled; }
    std::vector<std::string> lines() const { return copyOf(lines_); }
    std::vector<std::string> consoleLines() const { return copyOf(consoleLines_); }
    /// Whether a line holds the text.
    bool contains(std::string_view text) const {
        const std::lock_guard lock(mutex_);
        for (const std::string& line : lines_) {
            if (line.find(text) != std::string::npos) return true;
        }
        return false;
    }
    void clear() {
        const std::lock_guard lock(mutex_);
        lines_.clear();
        consoleLines_.clear();
    }

    bool isEnabled(std::string_view, std::string_view) override { return isEnabled_; }
    void write(std::string_view, std::string_view, std::string_view line) override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(line);
    }
    void console(std::string_view line) override {
        const std::lock_guard lock(mutex_);
        consoleLines_.emplace_back(line);
    }

private:
    std::vector<std::string> copyOf(const std::vector<std::string>& all) const {
        const std::lock_guard lock(mutex_);
        return all;
    }

    std::atomic<bool> isEnabled_ = true;
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    std::vector<std::string> consoleLines_;
};

}  // namespace tavrolin::adapters::memory
