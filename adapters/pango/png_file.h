#pragma once

#include <cstddef>
#include <cstdint>
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

/// Empty when there is no memory for it.
std::string pngFile(const Pixels& pixels);

}  // namespace tavrolin::adapters::pango
