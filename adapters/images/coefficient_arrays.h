#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

// Does not include what it needs itself.
#include <jpeglib.h>

namespace tavrolin::adapters::images {

/// The rows of blocks of one of a JPEG's components, of which a window is in memory. Nothing here
/// throws: the JPEG library calls it, and it can't be unwound.
class CoefficientArray {
public:
    CoefficientArray() = default;
    CoefficientArray(JDIMENSION width, JDIMENSION height, JDIMENSION mostRows)
        : width_(width), height_(height), mostRows_(mostRows) {}

    std::size_t bytes() const { return rowBytes() * height_; }
    /// All of it in memory, zero. False when there is no memory.
    bool hold() { return makeWindow(height_); }
    /// In a file from `offset` on, where it has only zeros or ends. False when there is no memory.
    bool holdIn(int file, std::uint64_t offset);
    /// So many rows from `first` on, at most as many as were announced, valid until the next call.
    /// Null when they can't be read, or the ones that make room for them not written.
    JBLOCKARRAY rows(JDIMENSION first, JDIMENSION count, bool willWrite);

private:
    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };

    std::size_t rowBytes() const { return std::size_t{width_} * sizeof(JBLOCK); }
    bool makeWindow(JDIMENSION rows);
    bool moveTo(JDIMENSION first);

    JDIMENSION width_ = 0;  // in blocks
    JDIMENSION height_ = 0;
    JDIMENSION mostRows_ = 0;  // that are asked for at once

    std::unique_ptr<JBLOCK, Free> window_;
    std::unique_ptr<JBLOCKROW, Free> windowRows_;
    JDIMENSION begin_ = 0;
    JDIMENSION count_ = 0;
    bool isChanged_ = false;  // the file doesn't have what the window has

    int file_ = -1;
    std::uint64_t offset_ = 0;
};

/// The coefficients of a JPEG of several scans, which come to three bytes for each pixel and more:
/// in memory as long as they are few, else in a file without a name in the folder for temporary
/// files. Where there is no such file they stay in memory. For the JPEG library; nothing throws.
class CoefficientArrays {
public:
    static constexpr std::size_t kMostInMemory = 8'000'000;

    CoefficientArrays() = default;
    ~CoefficientArrays();
    CoefficientArrays(const CoefficientArrays&) = delete;
    CoefficientArrays& operator=(const CoefficientArrays&) = delete;

    /// Null when there are more of them than a picture has components.
    CoefficientArray* add(JDIMENSION width, JDIMENSION height, JDIMENSION mostRows);
    /// Gives place to all that were added. False when there is no memory.
    bool make();

private:
    std::array<CoefficientArray, MAX_COMPONENTS> arrays_;
    std::size_t count_ = 0;
    int file_ = -1;
};

}  // namespace tavrolin::adapters::images
