#pragma once

#include <string>

namespace tavrolin::device {

/// Keeps other processes out as long as it lives: waits for its turn. The path may be a folder's; a
/// file is made when it is missing, and stays.
class FileLock {
public:
    /// Throws DeviceError.
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int descriptor_;
};

}  // namespace tavrolin::device
