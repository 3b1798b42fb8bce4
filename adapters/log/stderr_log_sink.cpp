#include "adapters/log/stderr_log_sink.h"

#include <unistd.h>

#include <cerrno>
#include <string>

namespace tavrolin::adapters::log {

namespace {

std::string shown(std::string_view line) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(line.size() + 1);
    for (const char c : line) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7f) {
            text.append("\\x").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 15U]);
        } else {
            text += c;
        }
    }
    return text += '\n';
}

}  // namespace

bool StderrLogSink::isEnabled(std::string_view /*subsystem*/, std::string_view /*category*/) {
    return true;
}

void StderrLogSink::write(std::string_view /*subsystem*/, std::string_view /*category*/,
                          std::string_view line) {
    console(line);
}

void StderrLogSink::console(std::string_view line) {
    const std::string text = shown(line);
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t size = ::write(STDERR_FILENO, text.data() + done, text.size() - done);
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return;
        done += static_cast<std::size_t>(size);
    }
}

}  // namespace tavrolin::adapters::log
