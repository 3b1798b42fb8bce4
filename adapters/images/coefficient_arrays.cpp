#include "adapters/images/coefficient_arrays.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <span>
#include <utility>

namespace tavrolin::adapters::images {

namespace {

// The library's vector code reads whole cache lines.
constexpr std::size_t kAlignment = 64;
// Of each array that is in a file, unless more rows are asked for at once.
constexpr std::size_t kWindowBytes = 1'000'000;

template <class T>
T* allocate(std::size_t bytes) {
    return static_cast<T*>(
        std::aligned_alloc(kAlignment, (bytes + kAlignment - 1) / kAlignment * kAlignment));
}

// Calls `step(done, left, offset)`, which returns as `pread` does, until nothing is left.
template <class Transfer>
bool transfer(std::size_t count, std::uint64_t offset, Transfer step) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t now = step(done, count - done, static_cast<off_t>(offset + done));
        if (now < 0 && errno == EINTR) continue;
        if (now <= 0) return false;
        done += static_cast<std::size_t>(now);
    }
    return true;
}

int unnamedFile() {
    const char* folder = std::getenv("TMPDIR");
    if (folder == nullptr || *folder == '\0') folder = P_tmpdir;
    const int file = ::open(folder, O_TMPFILE | O_RDWR | O_CLOEXEC | O_EXCL, 0600);
    if (file >= 0) return file;
    // Not every file system can do that.
    std::array<char, PATH_MAX> name{};
    const int length = std::snprintf(name.data(), name.size(), "%s/tavrolin-XXXXXX", folder);
    if (length < 0 || static_cast<std::size_t>(length) >= name.size()) return -1;
    const int named = ::mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0) ::unlink(name.data());
    return named;
}

}  // namespace

bool CoefficientArray::makeWindow(JDIMENSION rows) {
    count_ = rows;
    window_.reset(allocate<JBLOCK>(rowBytes() * count_));
    windowRows_.reset(allocate<JBLOCKROW>(sizeof(JBLOCKROW) * count_));
    if (!window_ || !windowRows_) return false;
    std::memset(window_.get(), 0, rowBytes() * count_);
    for (JDIMENSION i = 0; i < count_; ++i)
        windowRows_.get()[i] = window_.get() + std::size_t{i} * width_;
    return true;
}

bool CoefficientArray::holdIn(int file, std::uint64_t offset) {
    file_ = file;
    offset_ = offset;
    const auto usual = static_cast<JDIMENSION>(kWindowBytes / std::max<std::size_t>(rowBytes(), 1));
    return makeWindow(std::min(height_, std::max(usual, mostRows_)));
}

JBLOCKARRAY CoefficientArray::rows(JDIMENSION first, JDIMENSION count, bool willWrite) {
    if (count > count_ || first > height_ - count) return nullptr;
    const bool isThere = first >= begin_ && first + count <= begin_ + count_;
    if (!isThere && !moveTo(first)) return nullptr;
    isChanged_ = isChanged_ || willWrite;
    return windowRows_.get() + (first - begin_);
}

bool CoefficientArray::moveTo(JDIMENSION first) {
    auto* const bytes = reinterpret_cast<std::uint8_t*>(window_.get());
    const std::size_t size = rowBytes() * count_;
    const auto writing = [&](std::size_t done, std::size_t left, off_t at) {
        return ::pwrite(file_, bytes + done, left, at);
    };
    if (isChanged_ && !transfer(size, offset_ + rowBytes() * begin_, writing)) return false;
    isChanged_ = false;
    begin_ = std::min(first, height_ - count_);
    const auto reading = [&](std::size_t done, std::size_t left, off_t at) {
        const ssize_t got = ::pread(file_, bytes + done, left, at);
        if (got != 0) return got;
        std::memset(bytes + done, 0, left);  // nothing was written there so far
        return static_cast<ssize_t>(left);
    };
    return transfer(size, offset_ + rowBytes() * begin_, reading);
}

CoefficientArrays::~CoefficientArrays() {
    if (file_ >= 0) ::close(file_);
}

CoefficientArray* CoefficientArrays::add(JDIMENSION width, JDIMENSION height, JDIMENSION mostRows) {
    if (count_ == arrays_.size()) return nullptr;
    CoefficientArray& array = arrays_[count_++];
    array = CoefficientArray(width, height, mostRows);
    return &array;
}

bool CoefficientArrays::make() {
    const std::span<CoefficientArray> added(arrays_.data(), count_);
    std::size_t bytes = 0;
    for (const CoefficientArray& array : added)
        bytes += array.bytes();
    if (bytes > kMostInMemory && file_ < 0) file_ = unnamedFile();
    const bool isInFile = bytes > kMostInMemory && file_ >= 0;
    std::uint64_t offset = 0;
    return std::ranges::all_of(added, [&](CoefficientArray& array) {
        const std::uint64_t begin = std::exchange(offset, offset + array.bytes());
        return isInFile ? array.holdIn(file_, begin) : array.hold();
    });
}

}  // namespace tavrolin::adapters::images
