#include "tavrolin/core/logger.h"

#include <array>
#include <atomic>
#include <exception>

#include "tavrolin/platform/log_sink.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

namespace {

constexpr std::string_view kSubsystem = "com.corvalen.tavrolin";
constexpr std::string_view kCategory = "CVNPushLogger";

// A change races with printing on purpose: nothing depends on it. Relaxed, so that it is no data
// race.
std::atomic<int> debugLevel{0};

// The class between the bracket and the first blank of "+[Class operation:]".
std::string_view classOf(std::string_view operation) {
    const std::size_t bracket = operation.find('[');
    if (bracket == std::string_view::npos) return operation;
    const std::string_view rest = operation.substr(bracket + 1);
    return rest.substr(0, rest.find(' '));
}

}  // namespace

void CVNPushLogger::setDebugLevel(int level) {
    debugLevel.store(level, std::memory_order_relaxed);
}

int CVNPushLogger::getDebugLevel() {
    return debugLevel.load(std::memory_order_relaxed);
}

bool CVNPushLogger::prints(LogLevel level) {
    // Compared as unsigned numbers: a negative threshold silences everything.
    return level != LogLevel::internal &&
           static_cast<unsigned>(getDebugLevel()) <= static_cast<unsigned>(level) &&
           platform::current().logSink->isEnabled(kSubsystem, kCategory);
}

std::string_view CVNPushLogger::logLevelString(int level) {
    static constexpr std::array<std::string_view, 9> kTags = {
        "🟦 CVNPushLogger(VERBOSE)",
        "🟪 CVNPushLogger(DEBUG)",
        "🟩 CVNPushLogger(INFO)",
        "🟨 CVNPushLogger(WARN)",
        "🟧 CVNPushLogger(ERROR)",
        "🟥 CVNPushLogger(FATAL)",
        "NONE",
        "⬜️ CVNPushLogger(SYSTEM)",
        "🟥🟦🟩 CVNPushLogger(INTERNAL)"};
    if (level < 1 || level > static_cast<int>(kTags.size())) return kTags[0];
    return kTags[static_cast<std::size_t>(level - 1)];
}

void CVNPushLogger::print(std::string_view callingClass, int logLevel, std::string_view func,
                          std::int32_t lineNumber, std::string_view str) {
    try {
        if (!prints(static_cast<LogLevel>(logLevel))) return;
        std::string line;
        line.reserve(callingClass.size() + func.size() + str.size() + 64);
        line.append(logLevelString(logLevel)).append(" ").append(callingClass);
        // The message stands before the function: deliberate.
        line.append(": ").append(str).append(" ").append(func);
        line.append(" (Line ").append(std::to_string(lineNumber)).append(")");
        platform::current().logSink->write(kSubsystem, kCategory, line);
    } catch (const std::exception&) {
        platform::current().logSink->console("CVNPushLogger: Exception occured in printing logs.");
    }
}

std::string formatMessage(std::string_view message,
                          std::initializer_list<foundation::Value> arguments) {
    std::string out;
    out.reserve(message.size() + 32 * arguments.size());
    const auto* argument = arguments.begin();
    for (std::size_t i = 0; i < message.size(); ++i) {
        if (message[i] == '%' && argument != arguments.end()) {
            const std::string_view rest = message.substr(i + 1);
            const std::size_t width =
                rest.starts_with("ld") || rest.starts_with("lu")                          ? 2
                : rest.starts_with('@') || rest.starts_with('d') || rest.starts_with('s') ? 1
                                                                                          : 0;
            if (width > 0) {
                out += argument->description();
                ++argument;
                i += width;
                continue;
            }
        }
        out += message[i];
    }
    return out;
}

void log(LogLevel level, std::string_view operation, std::string_view message,
         const std::source_location& where) {
    CVNPushLogger::print(classOf(operation), static_cast<int>(level), operation,
                         static_cast<std::int32_t>(where.line()), message);
}

}  // namespace tavrolin
