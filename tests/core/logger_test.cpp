#include "tavrolin/core/logger.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "adapters/memory/memory_platform.h"

namespace tavrolin {

namespace {

class LoggerTest : public testing::Test {
protected:
    LoggerTest() { platform::install(memory_.platform()); }

    std::vector<std::string> printedAt(int threshold) {
        memory_.logSink.clear();
        CVNPushLogger::setDebugLevel(threshold);
        for (int level = -1; level <= 10; ++level)
            CVNPushLogger::print("", level, "", 0, std::to_string(level));
        std::vector<std::string> levels;
        for (const std::string& line : memory_.logSink.lines())
            levels.push_back(line.substr(line.find(" : ") + 3).substr(0, 2));
        return levels;
    }

    // Lives as long as the process, as what it hands out does.
    adapters::memory::MemoryPlatform& memory_ = *new adapters::memory::MemoryPlatform;
};

}  // namespace

TEST_F(LoggerTest, PrintsTagClassMessageFunctionAndLineInThisOrder) {
    CVNPushLogger::print("CVNPushPreferences", 4, "-[CVNPushPreferences setSuitName:]", 37,
                         "Corvalen doesn't have app group name");
    EXPECT_EQ(memory_.logSink.lines().back(),
              "🟨 CVNPushLogger(WARN) CVNPushPreferences: Corvalen doesn't have app group name "
              "-[CVNPushPreferences setSuitName:] (Line 37)");
    const char8_t* const tags[] = {
        u8"🟦 CVNPushLogger(VERBOSE)",        u8"🟦 CVNPushLogger(VERBOSE)",
        u8"🟪 CVNPushLogger(DEBUG)",          u8"🟩 CVNPushLogger(INFO)",
        u8"🟨 CVNPushLogger(WARN)",           u8"🟧 CVNPushLogger(ERROR)",
        u8"🟥 CVNPushLogger(FATAL)",          u8"NONE",
        u8"\u2B1C\uFE0F CVNPushLogger(SYSTEM)", u8"🟥🟦🟩 CVNPushLogger(INTERNAL)",
        u8"🟦 CVNPushLogger(VERBOSE)"};
    for (int level = 0; level <= 10; ++level) {
        EXPECT_EQ(CVNPushLogger::logLevelString(level), reinterpret_cast<const char*>(tags[level]));
    }
}

TEST_F(LoggerTest, PrintsFromTheThresholdUpwardsButNeverLevelNine) {
    using Levels = std::vector<std::string>;
    EXPECT_EQ(printedAt(0),
              (Levels{"-1", "0 ", "1 ", "2 ", "3 ", "4 ", "5 ", "6 ", "7 ", "8 ", "10"}));
    EXPECT_EQ(printedAt(5), (Levels{"-1", "5 ", "6 ", "7 ", "8 ", "10"}));
    EXPECT_EQ(printedAt(7), (Levels{"-1", "7 ", "8 ", "10"}));
    EXPECT_EQ(printedAt(9), (Levels{"-1", "10"}));  // compared as unsigned numbers
    EXPECT_EQ(printedAt(-1), (Levels{"-1"}));

    CVNPushLogger::setDebugLevel(0);
    memory_.logSink.clear();
    memory_.logSink.setEnabled(false);
    CVNPushLogger::print("", 8, "", 0, "");
    EXPECT_TRUE(memory_.logSink.lines().empty());
}

TEST_F(LoggerTest, SaysOnTheConsoleThatALineWasLost) {
    class Failing : public platform::ForwardingLogSink {
    public:
        using ForwardingLogSink::ForwardingLogSink;
        void write(std::string_view, std::string_view, std::string_view) override {
            throw std::runtime_error("no room");
        }
    };
    Failing failing(memory_.logSink);
    platform::Platform ports = memory_.platform();
    ports.logSink = &failing;
    platform::install(ports);
    CVNPushLogger::print("", 8, "", 0, "");
    EXPECT_EQ(memory_.logSink.consoleLines(),
              std::vector<std::string>{"CVNPushLogger: Exception occured in printing logs."});
    platform::install(memory_.platform());
}

TEST_F(LoggerTest, GuardLogsTheReasonOfItsOwnExceptionOnly) {
    EXPECT_FALSE(guard("+[CVNSome doIt:]", "Could not do it due to exception: %@",
                       [] { static_cast<void>(foundation::Value(1).items()); }));
    const std::string line = memory_.logSink.lines().back();
    EXPECT_TRUE(
        line.starts_with("🟥 CVNPushLogger(FATAL) CVNSome: Could not do it due to exception: "
                         "an integer can't be asked for its elements +[CVNSome doIt:] (Line "))
        << line;
    EXPECT_THROW(guard("+[CVNSome doIt:]", "", [] { throw std::bad_alloc(); }), std::bad_alloc);
}

TEST_F(LoggerTest, FillsAMessageWithAsManyArgumentsAsThereAre) {
    EXPECT_EQ(formatMessage("%@ and %lu, 100%, %d", {"a %@ text", 7}), "a %@ text and 7, 100%, %d");
    EXPECT_EQ(formatMessage("%@", {foundation::Value()}), "(null)");
}

}  // namespace tavrolin
