#include "adapters/log/journal_log_sink.h"

#include <sys/uio.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <array>
#include <string>

namespace tavrolin::adapters::log {

namespace {

iovec field(const std::string& text) {
    return {const_cast<char*>(text.data()), text.size()};
}

}  // namespace

bool JournalLogSink::isEnabled(std::string_view /*subsystem*/, std::string_view /*category*/) {
    return true;
}

void JournalLogSink::write(std::string_view subsystem, std::string_view category,
                           std::string_view line) {
    const std::string message = "MESSAGE=" + std::string(line);
    const std::string priority = "PRIORITY=5";  // notice: what a default log type is here
    const std::string subsystemField = "TAVROLIN_SUBSYSTEM=" + std::string(subsystem);
    const std::string categoryField = "TAVROLIN_CATEGORY=" + std::string(category);
    const std::array<iovec, 4> fields = {field(message), field(priority), field(subsystemField),
                                         field(categoryField)};
    // Without a journal the call succeeds and the line is lost.
    const bool hasJournal = access("/run/systemd/journal/socket", W_OK) == 0;
    if (!hasJournal || sd_journal_sendv(fields.data(), static_cast<int>(fields.size())) != 0) {
        console_.console(line);
    }
}

void JournalLogSink::console(std::string_view line) {
    console_.console(line);
}

}  // namespace tavrolin::adapters::log
