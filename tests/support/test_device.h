#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin::tests {

/// What a finished program left.
struct ProgramResult {
    int status = -1;  // the exit status; 128 and more: killed by that signal
    std::string output;
    std::string errors;
};

/// The built command line, running.
class RunningProgram {
public:
    RunningProgram(const std::vector<std::string>& arguments, std::string_view input);
    ~RunningProgram();
    RunningProgram(RunningProgram&& other) noexcept;
    RunningProgram& operator=(RunningProgram&&) = delete;

    /// Waits for its end.
    ProgramResult finish();
    /// The process that it started; waits until there is one.
    pid_t child() const;

private:
    pid_t pid_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

/// A device in a fresh folder, which is removed at the end. Commands run with `--time jump --json`.
class TestDevice {
public:
    TestDevice();
    ~TestDevice();
    TestDevice(const TestDevice&) = delete;
    TestDevice& operator=(const TestDevice&) = delete;

    const std::string& folder() const { return folder_; }
    std::string groupFolder() const { return folder_ + "/groups/group.corvalen.sample"; }

    ProgramResult run(const std::vector<std::string>& arguments, std::string_view input = {}) const;
    RunningProgram start(const std::vector<std::string>& arguments,
                         std::string_view input = {}) const;
    /// What the command printed; fails the test when it did not end with 0.
    foundation::Value look(const std::vector<std::string>& arguments) const;
    /// Delivers a payload and gives the printed result; fails the test when that did not end with
    /// 0.
    foundation::Value deliver(const foundation::Value& payload,
                              const std::vector<std::string>& arguments = {}) const;

private:
    std::string parent_;
    std::string folder_;
};

/// A payload of this system that the extension may rewrite. `section` is its product section, which
/// gets the tracking id.
foundation::Value pushPayload(std::string_view trid, foundation::Value section = {});

std::string compactJSON(const foundation::Value& value);
foundation::Value parsedJSON(std::string_view text);
std::string fileText(const std::string& path);
void writeFile(const std::string& path, std::string_view text);

}  // namespace tavrolin::tests
