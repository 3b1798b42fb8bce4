#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "adapters/posix/posix_files.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/json.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/platform.h"
#include "tests/support/taken_log.h"

namespace tavrolin::payload_test {

/// A folder of its own as the container of every app group; gone at the end.
class FolderFiles : public adapters::posix::PosixFiles {
public:
    FolderFiles() : FolderFiles(makeFolder()) {}
    ~FolderFiles() override { std::filesystem::remove_all(root_); }

    std::string path(std::string_view name) const { return (root_ / name).string(); }
    std::string add(std::string_view name) const {
        std::filesystem::create_directories((root_ / name).parent_path());
        std::ofstream(root_ / name) << "content";
        return path(name);
    }

private:
    explicit FolderFiles(const std::filesystem::path& root)
        : PosixFiles([root](std::string_view) { return std::optional(root.string()); },
                     std::nullopt),
          root_(root) {}
    static std::filesystem::path makeFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "payload-XXXXXX").string();
        return std::filesystem::canonical(mkdtemp(name.data()));
    }

    std::filesystem::path root_;
};

/// The ports that payload handling uses; the clock stands at 2026-11-24T09:30:00 UTC.
struct PayloadPlatform {
    static constexpr std::string_view kNow = "2026-11-24T09:30:00";

    PayloadPlatform() {
        platform::Platform ports = memory.platform();
        ports.files = &files;
        platform::install(ports);
        memory.dispatch.advance(foundation::secondsBetween(memory.dispatch.now(), {1'795'512'600}));
    }

    std::vector<std::string> takeLog() { return tests::takenLog(memory.logSink); }

    adapters::memory::MemoryPlatform memory;
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
