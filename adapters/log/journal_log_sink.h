#pragma once

#include "adapters/log/stderr_log_sink.h"

namespace tavrolin::adapters::log {

/// Log lines in the system's journal, with the fields TAVROLIN_SUBSYSTEM and TAVROLIN_CATEGORY; a
/// line that the journal doesn't take goes to standard error. Threads: any.
class JournalLogSink : public platform::LogSink {
public:
    bool isEnabled(std::string_view subsystem, std::string_view category) override;
    void write(std::string_view subsystem, std::string_view category,
               std::string_view line) override;
    void console(std::string_view line) override;

private:
    StderrLogSink console_;
};

}  // namespace tavrolin::adapters::log
