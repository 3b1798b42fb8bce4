#pragma once

#include <stdlib.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "adapters/memory/memory_dispatch.h"
#include "adapters/memory/memory_json_text.h"
#include "adapters/memory/memory_url_session.h"
#include "tavrolin/platform/platform.h"
#include "tests/support/recording_log_sink.h"

namespace tavrolin::network_test {

using tests::RecordingLogSink;

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

/// The ports that the network uses, in memory. The others are addresses, nothing more.
struct NetworkPlatform {
    NetworkPlatform() {
        platform::Platform ports;
        ports.application = untouched<platform::Application>();
        ports.attachments = untouched<platform::Attachments>();
        ports.bundles = untouched<platform::Bundles>();
        ports.dispatch = &dispatch;
        ports.files = untouched<platform::Files>();
        ports.imageDecoder = untouched<platform::ImageDecoder>();
        ports.json = &json;
        ports.logSink = &log;
        ports.pasteboard = untouched<platform::Pasteboard>();
        ports.preferences = untouched<platform::PreferencesSuites>();
        ports.recordStores = untouched<platform::RecordStores>();
        ports.urlSession = &session;
        ports.notificationCenter = untouched<platform::UserNotificationCenter>();
        install(ports);
    }

    /// In the place of the session in memory.
    void install(platform::URLSession& other) {
        platform::Platform ports = platform::current();
        ports.urlSession = &other;
        install(ports);
    }

    std::vector<std::string> takeLog() { return std::exchange(log.lines, {}); }

    Folder folder;
    RecordingLogSink log;
    adapters::memory::MemoryDispatch dispatch;
    adapters::memory::MemoryJSONText json;
    adapters::memory::MemoryURLSession session{dispatch, folder.path};

private:
    static void install(const platform::Platform& ports) { platform::install(ports); }

    template <class Port>
    static Port* untouched() {
        static std::max_align_t nothing;
        return reinterpret_cast<Port*>(&nothing);
    }
};

}  // namespace tavrolin::network_test
