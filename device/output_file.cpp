#include "device/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "device/device_error.h"
#include "device/device_folder.h"

namespace tavrolin::device {

namespace fs = std::filesystem;

namespace {

constexpr unsigned kPermissions = 0777;

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw DeviceError("can't write " + path + ": " + reason);
}

std::error_code copied(const std::string& from, const std::string& to) {
    std::error_code error;
    std::ostringstream bytes;
    bytes << std::ifstream(from, std::ios::binary).rdbuf();
    std::ofstream stream(to, std::ios::binary);
    stream << bytes.view();
    stream.close();
    if (!stream) return {errno, std::generic_category()};
    fs::permissions(to, fs::status(from, error).permissions(), error);
    return error;
}

}  // namespace

OutputFile::OutputFile(const std::string& path, unsigned mode, const std::string& draftFolder) {
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);  // what a link points to
    if (error) fail(path, error.message());
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) fail(path, "it is a folder");
        if (!S_ISREG(status.st_mode)) fail(path, "it is no ordinary file");
        if (access(target.c_str(), W_OK) != 0) fail(path, std::generic_category().message(errno));
        mode = status.st_mode & kPermissions;
    }
    path_ = fs::absolute(target, error).string();
    if (access(fs::path(path_).parent_path().c_str(), W_OK | X_OK) != 0)
        fail(path, std::generic_category().message(errno));
    draft_ = (fs::path(draftFolder) / randomIdentifier()).string();
    const int file = open(draft_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) fail(draft_, std::generic_category().message(errno));
    fchmod(file, mode);
    close(file);
}

OutputFile::~OutputFile() {
    if (!draft_.empty()) unlink(draft_.c_str());
}

void OutputFile::keep() {
    std::error_code error;
    fs::rename(draft_, path_, error);
    if (error == std::errc::cross_device_link) {
        const std::string copy = path_ + "." + randomIdentifier();
        error = copied(draft_, copy);
        if (!error) fs::rename(copy, path_, error);
        if (error) unlink(copy.c_str());
        unlink(draft_.c_str());
    }
    if (error) fail(path_, error.message());
    draft_.clear();
}

}  // namespace tavrolin::device
