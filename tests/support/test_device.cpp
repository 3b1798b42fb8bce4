#include "tests/support/test_device.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "adapters/json/json_text.h"

extern char** environ;

namespace tavrolin::tests {

namespace fs = std::filesystem;

using foundation::Value;

namespace {

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return ends;
}

// Reads both ends until both are closed, so that neither can block the writer.
void drain(int output, std::string& outputText, int errors, std::string& errorText) {
    std::array<pollfd, 2> ends = {{{output, POLLIN, 0}, {errors, POLLIN, 0}}};
    const std::array<std::string*, 2> texts = {&outputText, &errorText};
    std::array<char, 65536> piece{};
    for (int open = 2; open > 0;) {
        poll(ends.data(), ends.size(), -1);
        for (std::size_t i = 0; i < ends.size(); ++i) {
            if (ends[i].revents == 0) continue;
            const ssize_t size = read(ends[i].fd, piece.data(), piece.size());
            if (size > 0) {
                texts[i]->append(piece.data(), static_cast<std::size_t>(size));
            } else {
                ends[i].fd = -1;
                --open;
            }
        }
    }
}

}  // namespace

RunningProgram::RunningProgram(const std::vector<std::string>& arguments, std::string_view input) {
    const auto output = makePipe();
    const auto errors = makePipe();
    // A file rather than a pipe, since nobody writes while the program runs.
    std::string inputName = fs::temp_directory_path() / "tavrolin-input-XXXXXX";
    const int inputFile = mkstemp(inputName.data());
    unlink(inputName.c_str());
    if (write(inputFile, input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
        throw std::runtime_error("can't write the program's input");
    }
    lseek(inputFile, 0, SEEK_SET);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, inputFile, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    std::string program = std::string(TAVROLIN_BINARY_DIR) + "/tavrolin";
    std::vector<std::string> words = arguments;
    std::vector<char*> argv = {program.data()};
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    const int error = posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    for (const int end : {inputFile, output[1], errors[1]})
        close(end);
    if (error != 0) throw std::runtime_error("can't start " + program);
    output_ = output[0];
    errors_ = errors[0];
}

RunningProgram::RunningProgram(RunningProgram&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      output_(std::exchange(other.output_, -1)),
      errors_(std::exchange(other.errors_, -1)) {}

RunningProgram::~RunningProgram() {
    if (pid_ > 0) finish();
}

ProgramResult RunningProgram::finish() {
    ProgramResult result;
    drain(output_, result.output, errors_, result.errors);
    close(output_);
    close(errors_);
    int status = 0;
    waitpid(std::exchange(pid_, -1), &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

pid_t RunningProgram::child() const {
    const std::string pid = std::to_string(pid_);
    for (;;) {
        std::ifstream children("/proc/" + pid + "/task/" + pid + "/children");
        pid_t child = 0;
        if (children >> child) return child;
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
        if (info.si_pid == pid_) throw std::runtime_error("the program ended without a child");
    }
}

TestDevice::TestDevice() {
    parent_ = fs::temp_directory_path() / "tavrolin-device-XXXXXX";
    if (mkdtemp(parent_.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = parent_ + "/phone";
}

TestDevice::~TestDevice() {
    std::error_code error;
    fs::remove_all(parent_, error);
}

RunningProgram TestDevice::start(const std::vector<std::string>& arguments,
                                 std::string_view input) const {
    std::vector<std::string> words = {"--device", folder_, "--time", "jump", "--json"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return {words, input};
}

ProgramResult TestDevice::run(const std::vector<std::string>& arguments,
                              std::string_view input) const {
    return start(arguments, input).finish();
}

Value TestDevice::look(const std::vector<std::string>& arguments) const {
    const ProgramResult result = run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    return parsedJSON(result.output);
}

Value TestDevice::deliver(const Value& payload, const std::vector<std::string>& arguments) const {
    std::vector<std::string> words = {"deliver", "-"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const ProgramResult result = run(words, compactJSON(payload));
    EXPECT_EQ(result.status, 0) << result.errors;
    return parsedJSON(result.output);
}

Value pushPayload(std::string_view trid, Value section) {
    section.set("trid", trid);
    return Value::dictionary(
        {{"aps", Value::dictionary({{"alert", Value::dictionary({{"title", "Fresh in"},
                                                                 {"body", "Have a look"}})},
                                    {"mutable-content", 1},
                                    {"category", "CorvalenPN"}})},
         {"cvnSrc", "Corvalen"},
         {"cvnPayload", section}});
}

std::string compactJSON(const Value& value) {
    return *adapters::json::JSONText().serialise(value, platform::JSONText::Style::compact);
}

Value parsedJSON(std::string_view text) {
    const auto value = adapters::json::JSONText().parse(text);
    EXPECT_TRUE(value) << text;
    return value ? *value : Value();
}

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string& path, std::string_view text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace tavrolin::tests
