#pragma once

#include <string>
#include <vector>

#include "adapters/memory/memory_log_sink.h"

namespace tavrolin::tests {

/// The lines since the last time, as "(LEVEL) Class: message operation".
inline std::vector<std::string> takenLog(adapters::memory::MemoryLogSink& sink) {
    std::vector<std::string> lines;
    for (const std::string& line : sink.lines()) {
        const std::size_t level = line.find('(');
        lines.push_back(line.substr(level, line.rfind(" (Line ") - level));
    }
    sink.clear();
    return lines;
}

}  // namespace tavrolin::tests
