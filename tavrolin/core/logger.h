#pragma once

#include <cstdint>
#include <source_location>
#include <string>
#include <string_view>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// The levels. A line is printed when its level is not `internal` and the process-wide threshold is
/// not above it.
enum class LogLevel : int {
    verbose = 1,
    debug = 2,
    info = 3,
    warn = 4,
    error = 5,
    fatal = 6,  // every caught exception
    none = 7,
    system = 8,   // the library's own milestones
    internal = 9  // never printed
};

inline constexpr std::int32_t CVNPushLogLevelInternal = 9;
inline constexpr bool CVNPushEnableInternalLog = false;

/// The one logger. Never raises. Threads: any.
class CVNPushLogger {
public:
    /// The threshold, 0 at start and in memory only. For the host: nothing in the library sets it.
    static void setDebugLevel(int level);
    static int getDebugLevel();

    /// One line: "TAG CLASS: MESSAGE FUNCTION (Line N)", to the log sink's default type.
    static void print(std::string_view callingClass, int logLevel, std::string_view func,
                      std::int32_t lineNumber, std::string_view str);
    static std::string_view logLevelString(int level);

    /// Whether `print` would print; for messages that are costly to make.
    static bool prints(LogLevel level);
};

/// Fills the `%@`, `%d`, `%ld`, `%lu` and `%s` of a message with the arguments, in order.
std::string formatMessage(std::string_view message,
                          std::initializer_list<foundation::Value> arguments);

/// Logs with the class taken from the operation's text, "+[Class operation:]", and the caller's
/// line.
void log(LogLevel level, std::string_view operation, std::string_view message,
         const std::source_location& where = std::source_location::current());

/// The guard around almost every public operation: runs the body; when it raises, logs the message
/// with its `%@` filled by the exception's reason, and returns false. Other exceptions pass.
template <class Body>
bool guard(std::string_view operation, std::string_view message, Body&& body,
           LogLevel level = LogLevel::fatal,
           const std::source_location& where = std::source_location::current()) {
    try {
        body();
        return true;
    } catch (const foundation::Exception& exception) {
        log(level, operation, formatMessage(message, {exception.reason()}), where);
        return false;
    }
}

}  // namespace tavrolin
