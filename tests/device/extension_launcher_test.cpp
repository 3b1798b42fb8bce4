#include "device/extension_launcher.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/test_device.h"

namespace tavrolin::tests {
namespace {

using device::ExtensionResult;
using foundation::Value;

// An extension program that does what the script says; its channel is descriptor 3.
std::string extensionProgram(const TestDevice& device, std::string_view script) {
    const std::string path = device.folder() + "-extension";
    writeFile(path, "#!/bin/sh\n" + std::string(script) + "\n");
    chmod(path.c_str(), 0700);
    return path;
}

TEST(ExtensionLauncher, TakesDeathAndNonsenseAsACrash) {
    const TestDevice device;
    platform::NotificationRequest request;
    request.content.userInfo = Value::dictionary();
    for (const char* script : {
             "exit 0",
             "kill -9 $$",
             "printf 'some words that are no message' >&3",
             // A promise of two bytes that are no archive.
             "printf '\\002\\000\\000\\000\\377\\377' >&3",
             // A promise of 4 GB.
             "printf '\\377\\377\\377\\377' >&3; exec sleep 100",
             // A well-formed message, {"content": 1}, that makes no sense.
             "printf '\\012\\000\\000\\000\\241\\147content\\001' >&3; exec sleep 100",
         }) {
        device::ProcessStart start;
        start.executable = extensionProgram(device, script);
        start.folder = device.folder();
        start.start = {1000};
        const ExtensionResult result = device::runServiceExtension(start, request);
        EXPECT_EQ(result.outcome, ExtensionResult::Outcome::crashed) << script;
        EXPECT_FALSE(result.content) << script;
        EXPECT_EQ(result.handedBackAt, start.start) << script;
    }
}

}  // namespace
}  // namespace tavrolin::tests
