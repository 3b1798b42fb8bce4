#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>
#include <thread>
#include <vector>

#include "adapters/log/journal_log_sink.h"
#include "adapters/log/stderr_log_sink.h"

namespace tavrolin::adapters::log {

TEST(StderrLogSink, ShowsWhatCouldSteerATerminal) {
    StderrLogSink sink;
    testing::internal::CaptureStderr();
    sink.write("subsystem", "category", "é 🟦\tb\x1B[2J\r\x7F" + std::string(1, '\0') + "c");
    sink.write("subsystem", "category",
               "\xC2\x9B"
               "2J \x9B");
    sink.console("plain");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "é 🟦\tb\\x1b[2J\\x0d\\x7f\\x00c\n\\xc2\\x9b2J \\x9b\nplain\n");
}

TEST(StderrLogSink, KeepsLinesWholeAmongThreads) {
    StderrLogSink sink;
    testing::internal::CaptureStderr();
    std::vector<std::thread> threads;
    for (char letter = 'a'; letter < 'e'; ++letter) {
        threads.emplace_back([&sink, letter] {
            for (int i = 0; i < 200; ++i)
                sink.write("", "", std::string(300, letter));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::istringstream lines(testing::internal::GetCapturedStderr());
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        ASSERT_EQ(line, std::string(300, line.empty() ? '?' : line[0]));
    EXPECT_EQ(count, 800U);
}

TEST(JournalLogSink, WritesToTheConsoleWhatTheJournalDoesNotTake) {
    if (access("/run/systemd/journal/socket", F_OK) == 0) GTEST_SKIP() << "this machine has one";
    JournalLogSink sink;
    testing::internal::CaptureStderr();
    sink.write("subsystem", "category", "a line");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a line\n");
}

}  // namespace tavrolin::adapters::log
