#include "adapters/curl/temporary_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace tavrolin::adapters::curl {

namespace {

foundation::Error failure(const std::string& what) {
    const int code = errno;
    return {"POSIX", code, what + ": " + std::strerror(code)};
}

std::string randomName() {
    std::array<unsigned char, 12> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return {};
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string name = "CVN";
    for (const unsigned char byte : bytes) {
        name += kDigits[byte >> 4U];
        name += kDigits[byte & 15U];
    }
    return name + ".tmp";
}

}  // namespace

TemporaryFile::~TemporaryFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!path_.empty()) unlink(path_.c_str());
}

foundation::Failure TemporaryFile::create() {
    const std::string name = randomName();
    if (name.empty()) return failure("no random name for a download");
    std::string path = directory_ + "/" + name;
    descriptor_ = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor_ < 0) return failure("cannot make " + path);
    path_ = std::move(path);
    return std::nullopt;
}

foundation::Failure TemporaryFile::append(std::string_view bytes) {
    if (descriptor_ < 0) {
        if (auto error = create()) return error;
    }
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return failure("cannot write " + path_);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return std::nullopt;
}

foundation::Failure TemporaryFile::close() {
    if (descriptor_ < 0) {
        if (auto error = create()) return error;
    }
    // Some file systems tell of a full disk only here.
    if (::close(std::exchange(descriptor_, -1)) != 0) return failure("cannot write " + path_);
    return std::nullopt;
}

}  // namespace tavrolin::adapters::curl
