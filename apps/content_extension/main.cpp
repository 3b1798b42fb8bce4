// The sample app's content extension, as the device starts it: a program of its own, since nothing
// else needs the libraries that draw.

#include <sys/stat.h>

#include <cstdio>
#include <cstring>

#include "device/content_extension/content_extension_process.h"

int main(int argc, char** argv) {
    // Whatever the device writes is for its owner only.
    umask(0077);
    if (argc == 2 && std::strcmp(argv[1], tavrolin::device::kContentExtensionProcess) == 0) {
        return tavrolin::device::runContentExtensionProcess(3);
    }
    std::fputs("tavrolin-content-extension: it is started by `tavrolin expand`, not by hand\n",
               stderr);
    return 2;
}
