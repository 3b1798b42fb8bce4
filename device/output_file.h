#pragma once

#include <string>

namespace tavrolin::device {

/// A file for people that another process writes: there as a whole, or not at all. What stands in
/// the way of writing it is said before any work begins.
class OutputFile {
public:
    /// Makes an empty file in `draftFolder`, with `mode` unless the one that is wanted is there and
    /// has its own. Throws DeviceError. Beside the wanted one nothing is left, also when this
    /// process is ended.
    OutputFile(const std::string& path, unsigned mode, const std::string& draftFolder);
    /// Without `keep` nothing is left.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// The file to write into.
    const std::string& draft() const { return draft_; }
    /// Puts it in its place. Throws DeviceError.
    void keep();

private:
    std::string path_;
    std::string draft_;
};

}  // namespace tavrolin::device
