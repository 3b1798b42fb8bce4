#pragma once

#include "tavrolin/platform/log_sink.h"

namespace tavrolin::adapters::log {

/// Log lines on standard error, each written at once. Control characters other than the line end
/// and the tab are shown as \xNN, so that a payload's text can't steer a terminal. Threads: any.
class StderrLogSink : public platform::LogSink {
public:
    bool isEnabled(std::string_view subsystem, std::string_view category) override;
    void write(std::string_view subsystem, std::string_view category,
               std::string_view line) override;
    void console(std::string_view line) override;
};

}  // namespace tavrolin::adapters::log
