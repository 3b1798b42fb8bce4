#include "device/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "device/device_error.h"

namespace tavrolin::device {

namespace {

int openFileOrFolder(const std::string& path) {
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file >= 0 || errno != EISDIR) return file;
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

}  // namespace

FileLock::FileLock(const std::string& path) : descriptor_(openFileOrFolder(path)) {
    int result = descriptor_ < 0 ? -1 : flock(descriptor_, LOCK_EX);
    while (descriptor_ >= 0 && result != 0 && errno == EINTR)
        result = flock(descriptor_, LOCK_EX);
    if (result == 0) return;
    const int error = errno;
    if (descriptor_ >= 0) close(descriptor_);
    throw DeviceError("can't lock " + path + ": " + std::generic_category().message(error));
}

FileLock::~FileLock() {
    close(descriptor_);
}

}  // namespace tavrolin::device
