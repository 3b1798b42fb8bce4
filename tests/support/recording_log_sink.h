#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/platform/log_sink.h"

namespace tavrolin::tests {

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

}  // namespace tavrolin::tests
