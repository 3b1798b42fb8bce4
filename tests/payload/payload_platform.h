#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/json.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/files.h"
#include "tavrolin/platform/log_sink.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin::payload_test {

/// Keeps what was logged: the level's tag, the message and the operation, without the line number.
class RecordingLogSink : public platform::LogSink {
public:
    bool isEnabled(std::string_view, std::string_view) override { return true; }
    void write(std::string_view, std::string_view, std::string_view line) override {
        lines.emplace_back(line.substr(0, line.rfind(" (Line ")));
    }
    void console(std::string_view line) override { lines.emplace_back(line); }

    std::vector<std::string> lines;
};

/// A folder of its own as the whole file system that an app group sees; gone at the end.
class FolderFiles : public platform::Files {
public:
    FolderFiles() {
        std::string name = (std::filesystem::temp_directory_path() / "payload-XXXXXX").string();
        root_ = std::filesystem::canonical(mkdtemp(name.data()));
    }
    ~FolderFiles() override { std::filesystem::remove_all(root_); }

    std::string path(std::string_view name) const { return (root_ / name).string(); }
    std::string add(std::string_view name) const {
        std::filesystem::create_directories((root_ / name).parent_path());
        std::ofstream(root_ / name) << "content";
        return path(name);
    }

    bool fileExists(std::string_view path) const override { return std::filesystem::exists(path); }
    bool isDirectory(std::string_view path) const override {
        return std::filesystem::is_directory(path);
    }
    std::optional<std::string> resolved(std::string_view path) const override {
        std::error_code error;
        const auto result = std::filesystem::canonical(path, error);
        return error ? std::nullopt : std::optional(result.string());
    }
    foundation::Failure removeItem(std::string_view path) override {
        std::filesystem::remove_all(path);
        return std::nullopt;
    }
    std::optional<std::string> containerForAppGroup(std::string_view) const override {
        return root_.string();
    }
    std::optional<std::string> documentsDirectory() const override { return std::nullopt; }

    foundation::Failure moveItem(std::string_view, std::string_view) override { return unused(); }
    foundation::Failure createDirectory(std::string_view) override { return unused(); }
    foundation::Failure copyFileAtomically(std::string_view, std::string_view) override {
        return unused();
    }
    foundation::Expected<std::vector<std::uint8_t>> contents(std::string_view) const override {
        return *unused();
    }

private:
    static foundation::Failure unused() { return foundation::Error{"test", 1, "not offered"}; }

    std::filesystem::path root_;
};

/// The ports that payload handling uses; the clock stands at 2026-11-24T09:30:00 UTC.
struct PayloadPlatform {
    static constexpr std::string_view kNow = "2026-11-24T09:30:00";

    PayloadPlatform() {
        platform::Platform ports = memory.platform();
        ports.files = &files;
        ports.logSink = &log;
        platform::install(ports);
        memory.dispatch.advance(foundation::secondsBetween(memory.dispatch.now(), {1'795'512'600}));
    }

    /// What was logged since the last time.
    std::vector<std::string> takeLog() { return std::exchange(log.lines, {}); }

    adapters::memory::MemoryPlatform memory;
    RecordingLogSink log;
    FolderFiles files;
};

inline foundation::Value json(std::string_view text) {
    auto value = foundation::valueWithJSON(text);
    if (!value) throw std::invalid_argument(value.error().description());
    return *value;
}

inline foundation::Value sample(std::string_view name) {
    std::ifstream file(TAVROLIN_SOURCE_DIR "/examples/payloads/" + std::string(name) + ".json");
    return json(std::string(std::istreambuf_iterator<char>(file), {}));
}

}  // namespace tavrolin::payload_test
