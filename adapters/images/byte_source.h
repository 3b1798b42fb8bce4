#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin::adapters::images {

/// The bytes of a picture, wherever they are. One thread at a time.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    virtual std::uint64_t size() const = 0;
    /// As many bytes as there are from `offset` on, at most `count`; 0 at the end and on failure.
    virtual std::size_t read(std::uint64_t offset, std::uint8_t* to, std::size_t count) const = 0;
};

std::unique_ptr<ByteSource> memorySource(foundation::Value::Bytes bytes);
/// Null when it can't be opened or is no regular file. It is opened for each read; what the path
/// leads to by then is read.
std::unique_ptr<ByteSource> fileSource(std::string_view path);

/// Reads a source from its beginning, a block at a time. The source must outlive it.
class ByteStream {
public:
    explicit ByteStream(const ByteSource& source) : source_(source) {}

    std::size_t read(std::uint8_t* to, std::size_t count);
    /// The next block without a copy, valid until the next call; empty at the end.
    foundation::Value::Bytes next();

private:
    const ByteSource& source_;
    std::uint64_t offset_ = 0;  // of the block's end
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::array<std::uint8_t, 16384> block_{};
};

}  // namespace tavrolin::adapters::images
