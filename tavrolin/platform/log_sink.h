#pragma once

#include <string_view>

namespace tavrolin::platform {

/// Where log lines go. Texts are UTF-8; one may hold line ends, which a sink must not let pass for
/// the end of the entry. Threads: any; a line is never torn.
/// Failures to write are swallowed: logging never disturbs its caller.
class LogSink {
public:
    virtual ~LogSink() = default;

    /// False when the system drops the default log type of this log, so that a line need not be
    /// made.
    virtual bool isEnabled(std::string_view subsystem, std::string_view category) = 0;
    virtual void write(std::string_view subsystem, std::string_view category,
                       std::string_view line) = 0;
    /// The plain console log, for what the log itself could not take.
    virtual void console(std::string_view line) = 0;
};

class ForwardingLogSink : public LogSink {
public:
    explicit ForwardingLogSink(LogSink& target) : target_(target) {}
    bool isEnabled(std::string_view subsystem, std::string_view category) override {
        return target_.isEnabled(subsystem, category);
    }
    void write(std::string_view subsystem, std::string_view category,
               std::string_view line) override {
        target_.write(subsystem, category, line);
    }
    void console(std::string_view line) override { target_.console(line); }

private:
    LogSink& target_;
};

}  // namespace tavrolin::platform
