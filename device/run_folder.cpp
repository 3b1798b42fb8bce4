#include "device/run_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "device/device_error.h"
#include "device/file_lock.h"

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

// The folders that runs left, locked, as long as this lives.
class Leftovers {
public:
    explicit Leftovers(const fs::path& folder) {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(folder, error)) {
            const int lock = lockFolder(entry.path().string(), LOCK_EX | LOCK_NB);
            if (lock < 0) {
                isSomebodyAtWork_ = true;
            } else {
                left_.emplace_back(entry.path(), lock);
            }
        }
    }
    ~Leftovers() {
        for (const auto& [path, lock] : left_)
            close(lock);
    }
    Leftovers(const Leftovers&) = delete;
    Leftovers& operator=(const Leftovers&) = delete;

    bool areThere() const { return !left_.empty(); }
    bool isSomebodyAtWork() const { return isSomebodyAtWork_; }
    void remove() {
        std::error_code error;
        for (const auto& [path, lock] : left_)
            fs::remove_all(path, error);
    }

private:
    std::vector<std::pair<fs::path, int>> left_;
    bool isSomebodyAtWork_ = false;
};

}  // namespace

RunFolder::RunFolder(std::string path, const std::function<void()>& tidyUp)
    : path_(std::move(path)), lock_(-1) {
    const fs::path parent = fs::path(path_).parent_path();
    std::error_code error;
    fs::create_directories(parent, error);
    // Between the making of a folder and its lock nobody may take it for a leftover.
    const FileLock all(parent.string());
    if (Leftovers leftovers(parent); leftovers.areThere()) {
        const bool isTidy = !tidyUp || !leftovers.isSomebodyAtWork();
        if (tidyUp && isTidy) tidyUp();
        if (isTidy) leftovers.remove();
    }
    fs::create_directory(path_, error);
    lock_ = lockFolder(path_, LOCK_EX);
    if (lock_ < 0) {
        throw DeviceError("can't make the folder " + path_ + (error ? ": " + error.message() : ""));
    }
}

RunFolder::~RunFolder() {
    std::error_code error;
    if (!isLeft_) fs::remove_all(path_, error);
    close(lock_);
}

}  // namespace tavrolin::device
