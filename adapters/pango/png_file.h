#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tavrolin::adapters::pango {

/// Premultiplied pixels, alpha in the upper byte, in the machine's order, as Cairo has them.
struct Pixels {
    const std::uint8_t* data = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::size_t stride = 0;  // in bytes

    const std::uint32_t* row(std::uint32_t y) const {
        return reinterpret_cast<const std::uint32_t*>(data + y * stride);
    }
    bool isOpaque() const;
    /// One row, not premultiplied, as 4 bytes a pixel; as 3 where all are opaque.
    void unpack(std::uint32_t y, bool withAlpha, std::uint8_t* to) const;
};

/// A PNG file, written with speed in mind.
class PNGFile {
public:
    /// `withAlpha`: RGBA, otherwise RGB.
    PNGFile(std::uint32_t width, std::uint32_t height, bool withAlpha);
    ~PNGFile();
    PNGFile(const PNGFile&) = delete;
    PNGFile& operator=(const PNGFile&) = delete;

    /// The next rows. False when there is no memory for them.
    bool add(const Pixels& rows);
    /// The whole file, once all rows are in it; empty when there is no memory for it.
    std::string finished();

private:
    class Writing;
    std::unique_ptr<Writing> writing_;
};

}  // namespace tavrolin::adapters::pango
