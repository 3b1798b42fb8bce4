#include "device/run_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "device/device_error.h"

namespace tavrolin::device {

namespace fs = std::filesystem;

namespace {

// The folder's descriptor with the lock on it, or -1.
int lockFolder(const std::string& path, int how) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0 && flock(descriptor, how) == 0) return descriptor;
    if (descriptor >= 0) close(descriptor);
    return -1;
}

void removeLeftovers(const fs::path& folder) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        const int lock = lockFolder(entry.path().string(), LOCK_EX | LOCK_NB);
        if (lock < 0) continue;  // somebody's who is at work
        fs::remove_all(entry.path(), error);
        close(lock);
    }
}

}  // namespace

RunFolder::RunFolder(std::string path) : path_(std::move(path)), lock_(-1) {
    const fs::path parent = fs::path(path_).parent_path();
    std::error_code error;
    fs::create_directories(parent, error);
    // Between the making of a folder and its lock nobody may take it for a leftover.
    const int all = lockFolder(parent.string(), LOCK_EX);
    removeLeftovers(parent);
    fs::create_directory(path_, error);
    lock_ = lockFolder(path_, LOCK_EX);
    if (all >= 0) close(all);
    if (lock_ < 0) {
        throw DeviceError("can't make the folder " + path_ + (error ? ": " + error.message() : ""));
    }
}

RunFolder::~RunFolder() {
    std::error_code error;
    fs::remove_all(path_, error);
    close(lock_);
}

}  // namespace tavrolin::device
