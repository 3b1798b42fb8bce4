#pragma once

#include <functional>
#include <string>

namespace tavrolin::device {

/// The temporary folder of one run of a process: made and locked here, removed with this object.
/// What runs left that were killed is removed when the next one begins.
class RunFolder {
public:
    /// `path` is the run's folder; others of its kind lie beside it. `tidyUp` is called when some
    /// were left and nobody is at work in one, before anybody else can begin; while somebody is,
    /// those that were left wait. Throws DeviceError, also what `tidyUp` throws.
    explicit RunFolder(std::string path, const std::function<void()>& tidyUp = {});
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    const std::string& path() const { return path_; }
    /// Leaves the folder behind, so that a later run tidies up.
    void leave() { isLeft_ = true; }

private:
    std::string path_;
    int lock_;
    bool isLeft_ = false;
};

}  // namespace tavrolin::device
