#include "adapters/posix/posix_files.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace tavrolin::adapters::posix {

namespace fs = std::filesystem;

using foundation::Error;
using foundation::Failure;

namespace {

constexpr std::size_t kPiece = std::size_t{128} * 1024;

Error errorWith(int code, std::string_view what, std::string_view path) {
    return {std::string(PosixFiles::kErrorDomain), code,
            "can't " + std::string(what) + " " + std::string(path) + ": " +
                std::generic_category().message(code)};
}

bool isNamed(std::string_view path) {
    return !path.empty() && path.find('\0') == std::string_view::npos;
}

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }
    // Some file systems report a failed write only here.
    bool close() { return ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

bool copyThroughBuffer(int from, int to) {
    std::vector<char> piece(kPiece);
    for (;;) {
        const ssize_t size = read(from, piece.data(), piece.size());
        if (size == 0) return true;
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return false;
        for (ssize_t done = 0; done < size;) {
            const ssize_t written =
                write(to, piece.data() + done, static_cast<std::size_t>(size - done));
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) return false;
            done += written;
        }
    }
}

// In the kernel, where the file system can share the blocks; else through a small buffer.
bool copyContents(int from, int to) {
    bool hasCopied = false;
    for (;;) {
        const ssize_t size = copy_file_range(from, nullptr, to, nullptr, std::size_t{1} << 30U, 0);
        if (size == 0) return hasCopied || copyThroughBuffer(from, to);
        if (size < 0) return !hasCopied && copyThroughBuffer(from, to);
        hasCopied = true;
    }
}

// A name beside the target that nobody has.
std::string temporaryName(std::string_view target) {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) number = 0;
    std::array<char, 32> suffix{};
    std::snprintf(suffix.data(), suffix.size(), ".%016llx",
                  static_cast<unsigned long long>(number));
    const fs::path path(target);
    return (path.parent_path() / (std::string(".copy") + suffix.data())).string();
}

}  // namespace

PosixFiles::PosixFiles(ContainerOfGroup containerOfGroup,
                       std::optional<std::string> documentsDirectory)
    : containerOfGroup_(std::move(containerOfGroup)),
      documentsDirectory_(std::move(documentsDirectory)) {}

bool PosixFiles::fileExists(std::string_view path) const {
    return isNamed(path) && access(std::string(path).c_str(), F_OK) == 0;
}

bool PosixFiles::isDirectory(std::string_view path) const {
    struct stat status {};
    return isNamed(path) && stat(std::string(path).c_str(), &status) == 0 &&
           S_ISDIR(status.st_mode);
}

bool PosixFiles::isReadableFile(std::string_view path) const {
    struct stat status {};
    return isNamed(path) && stat(std::string(path).c_str(), &status) == 0 &&
           S_ISREG(status.st_mode) && access(std::string(path).c_str(), R_OK) == 0;
}

std::optional<std::string> PosixFiles::resolved(std::string_view path) const {
    if (!isNamed(path)) return std::nullopt;
    char* resolved = realpath(std::string(path).c_str(), nullptr);
    if (resolved == nullptr) return std::nullopt;
    std::string result(resolved);
    std::free(resolved);
    return result;
}

Failure PosixFiles::moveItem(std::string_view from, std::string_view to) {
    if (!isNamed(from) || !isNamed(to)) return errorWith(EINVAL, "move", from);
    const std::string source(from);
    const std::string target(to);
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
        return std::nullopt;
    }
    if (errno != EXDEV) return errorWith(errno, "move", from);
    if (fileExists(to)) return errorWith(EEXIST, "move", from);
    if (Failure failure = copyFileAtomically(from, to)) return failure;
    return removeItem(from);
}

Failure PosixFiles::removeItem(std::string_view path) {
    if (!isNamed(path)) return errorWith(EINVAL, "remove", path);
    std::error_code error;
    const std::uintmax_t removed = fs::remove_all(fs::path(path), error);
    if (error) return errorWith(error.value(), "remove", path);
    if (removed == 0) return errorWith(ENOENT, "remove", path);
    return std::nullopt;
}

Failure PosixFiles::createDirectory(std::string_view path) {
    if (!isNamed(path)) return errorWith(EINVAL, "make the folder", path);
    if (mkdir(std::string(path).c_str(), 0700) == 0) return std::nullopt;
    return errorWith(errno, "make the folder", path);
}

Failure PosixFiles::copyFileAtomically(std::string_view from, std::string_view to) {
    if (!isNamed(from) || !isNamed(to)) return errorWith(EINVAL, "copy", from);
    const Descriptor source(open(std::string(from).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (source.get() < 0 || fstat(source.get(), &status) != 0) {
        return errorWith(errno, "read", from);
    }
    if (!S_ISREG(status.st_mode)) return errorWith(EINVAL, "copy what is no file,", from);
    const std::string temporary = temporaryName(to);
    Descriptor target(
        open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (target.get() < 0) return errorWith(errno, "write", to);
    if (copyContents(source.get(), target.get()) && target.close() &&
        rename(temporary.c_str(), std::string(to).c_str()) == 0) {
        return std::nullopt;
    }
    const int code = errno;
    unlink(temporary.c_str());
    return errorWith(code, "write", to);
}

foundation::Expected<std::vector<std::uint8_t>> PosixFiles::contents(std::string_view path) const {
    if (!isNamed(path)) return errorWith(EINVAL, "read", path);
    const Descriptor file(open(std::string(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (file.get() < 0 || fstat(file.get(), &status) != 0) return errorWith(errno, "read", path);
    if (!S_ISREG(status.st_mode)) return errorWith(EINVAL, "read what is no file,", path);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t size = read(file.get(), bytes.data() + done, bytes.size() - done);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return errorWith(errno, "read", path);
        if (size == 0) break;  // it became shorter meanwhile
        done += static_cast<std::size_t>(size);
    }
    bytes.resize(done);
    return bytes;
}

std::optional<std::string> PosixFiles::containerForAppGroup(std::string_view identifier) const {
    return containerOfGroup_ ? containerOfGroup_(identifier) : std::nullopt;
}

}  // namespace tavrolin::adapters::posix
