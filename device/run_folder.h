#pragma once

#include <string>

namespace tavrolin::device {

/// The temporary folder of one run of a process: made and locked here, removed with this object.
/// What runs left that were killed is removed when the next one begins.
class RunFolder {
public:
    /// `path` is the run's folder; others of its kind lie beside it. Throws DeviceError.
    explicit RunFolder(std::string path);
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
    int lock_;
};

}  // namespace tavrolin::device
