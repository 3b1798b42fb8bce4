// The command line of the device: one command a run, as a person, the push service or the platform
// would act.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <exception>

#include "apps/tavrolin/commands.h"
#include "apps/tavrolin/printing.h"
#include "device/app_process.h"
#include "device/service_extension_process.h"

namespace {

using namespace tavrolin::apps;

int run(int argc, char** argv, mode_t mask) {
    CLI::App app("A phone in a folder: shows what a push notification does, without a phone.",
                 "tavrolin");
    app.set_version_flag("--version", "tavrolin 3.5.7");
    app.require_subcommand(0, 1);
    app.fallthrough();
    constexpr mode_t kReadableAndWritable = 0666;
    Commands commands(kReadableAndWritable & ~mask);
    commands.addTo(app);
    try {
        app.parse(argc, argv);
        // Said here, so that a word that is no command is named first.
        if (!commands.isGiven()) throw CLI::RequiredError("A command");
    } catch (const CLI::ParseError& error) {
        const bool isHelp = error.get_exit_code() == 0;
        app.exit(error);
        return isHelp ? kDone : kWrongUsage;
    }
    return commands.run();
}

// A closed standard stream's number would go to the next file that is opened, and what is printed
// would be written into that.
void openStandardStreams() {
    for (int descriptor = open("/dev/null", O_RDWR); descriptor >= 0;
         descriptor = dup(descriptor)) {
        if (descriptor > STDERR_FILENO) {
            close(descriptor);
            return;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    openStandardStreams();
    // Whatever the device writes is for its owner only; pictures are as the user has it.
    const mode_t mask = umask(0077);
    if (argc == 2 && std::strcmp(argv[1], tavrolin::device::kServiceExtensionProcess) == 0) {
        return tavrolin::device::runServiceExtensionProcess(3);
    }
    if (argc == 2 && std::strcmp(argv[1], tavrolin::device::kAppProcess) == 0) {
        return tavrolin::device::runAppProcess(3);
    }
    try {
        return run(argc, argv, mask);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tavrolin: %s\n", harmless(error.what()).c_str());
        return kNotDone;
    }
}
