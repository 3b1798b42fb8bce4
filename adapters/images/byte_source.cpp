#include "adapters/images/byte_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace tavrolin::adapters::images {

namespace {

class MemorySource : public ByteSource {
public:
    explicit MemorySource(foundation::Value::Bytes bytes) : bytes_(bytes.begin(), bytes.end()) {}

    std::uint64_t size() const override { return bytes_.size(); }
    std::size_t read(std::uint64_t offset, std::uint8_t* to, std::size_t count) const override {
        if (offset >= bytes_.size()) return 0;
        const std::size_t got = std::min(count, bytes_.size() - static_cast<std::size_t>(offset));
        std::memcpy(to, bytes_.data() + offset, got);
        return got;
    }

private:
    std::vector<std::uint8_t> bytes_;
};

// Open for as long as it is read from; a picture that isn't looked at takes no descriptor.
class OpenFile {
public:
    explicit OpenFile(const std::string& path)
        // Without blocking: a pipe's other end may never open.
        : descriptor_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
        isRegular_ =
            descriptor_ >= 0 && ::fstat(descriptor_, &status_) == 0 && S_ISREG(status_.st_mode);
    }
    ~OpenFile() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool isRegular() const { return isRegular_; }
    std::uint64_t size() const { return static_cast<std::uint64_t>(status_.st_size); }
    std::size_t read(std::uint64_t offset, std::uint8_t* to, std::size_t count) const {
        std::size_t got = 0;
        while (got < count) {
            const ssize_t now =
                ::pread(descriptor_, to + got, count - got, static_cast<off_t>(offset + got));
            if (now < 0 && errno == EINTR) continue;
            if (now <= 0) break;
            got += static_cast<std::size_t>(now);
        }
        return got;
    }

private:
    int descriptor_;
    bool isRegular_ = false;
    struct stat status_ {};
};

class FileSource : public ByteSource {
public:
    FileSource(std::string path, std::uint64_t size) : path_(std::move(path)), size_(size) {}

    std::uint64_t size() const override { return size_; }
    std::size_t read(std::uint64_t offset, std::uint8_t* to, std::size_t count) const override {
        const OpenFile file(path_);
        return file.isRegular() ? file.read(offset, to, count) : 0;
    }

private:
    std::string path_;
    std::uint64_t size_;
};

}  // namespace

std::unique_ptr<ByteSource> memorySource(foundation::Value::Bytes bytes) {
    return std::make_unique<MemorySource>(bytes);
}

std::unique_ptr<ByteSource> fileSource(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) return nullptr;
    std::string name(path);
    const OpenFile file(name);
    if (!file.isRegular()) return nullptr;
    return std::make_unique<FileSource>(std::move(name), file.size());
}

std::size_t ByteStream::read(std::uint8_t* to, std::size_t count) {
    std::size_t got = 0;
    while (got < count) {
        if (begin_ == end_) {
            begin_ = 0;
            end_ = source_.read(offset_, block_.data(), block_.size());
            offset_ += end_;
            if (end_ == 0) break;
        }
        const std::size_t now = std::min(count - got, end_ - begin_);
        std::memcpy(to + got, block_.data() + begin_, now);
        begin_ += now;
        got += now;
    }
    return got;
}

foundation::Value::Bytes ByteStream::next() {
    begin_ = end_ = source_.read(offset_, block_.data(), block_.size());
    offset_ += end_;
    return {block_.data(), end_};
}

}  // namespace tavrolin::adapters::images
