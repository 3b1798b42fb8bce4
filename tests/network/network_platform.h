#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "tests/support/taken_log.h"

namespace tavrolin::network_test {

/// A folder that is gone at the end.
struct Folder {
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "network-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path;
};

/// The platform in memory, with downloads in a folder of their own.
struct NetworkPlatform {
    NetworkPlatform() { install(session); }

    /// In the place of the session in memory.
    void install(platform::URLSession& other) {
        platform::Platform ports = memory.platform();
        ports.urlSession = &other;
        platform::install(ports);
    }

    std::vector<std::string> takeLog() { return tests::takenLog(memory.logSink); }

    Folder folder;
    adapters::memory::MemoryPlatform memory;
    adapters::memory::MemoryDispatch& dispatch = memory.dispatch;
    adapters::memory::MemoryURLSession session{dispatch, folder.path};
};

}  // namespace tavrolin::network_test
