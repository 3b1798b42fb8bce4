#include "adapters/log/stderr_log_sink.h"

#include <unistd.h>

#include <cerrno>
#include <string>

namespace tavrolin::adapters::log {

namespace {

// Control characters, those of C1 (U+0080 to U+009F) and their bare bytes included.
bool isControl(std::string_view text, std::size_t at) {
    const auto byteAt = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto isC1 = [](unsigned byte) { return byte >= 0x80 && byte < 0xA0; };
    const unsigned byte = byteAt(at);
    if (byte < 0x80) return (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
    if (byte == 0xC2) return isC1(byteAt(at + 1));
    // Otherwise such a byte continues a character, unless there is none.
    const unsigned before = at > 0 ? byteAt(at - 1) : 0;
    return isC1(byte) && (before < 0x80 || before == 0xC2);
}

std::string shown(std::string_view line) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(line.size() + 1);
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto byte = static_cast<unsigned char>(line[i]);
        if (isControl(line, i)) {
            text.append("\\x").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 15U]);
        } else {
            text += line[i];
            // What follows belongs to the same entry: a payload's text can't begin one of its own.
            if (line[i] == '\n') text += "  ";
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
