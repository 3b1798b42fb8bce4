#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "adapters/images/byte_source.h"
#include "adapters/images/scaling.h"

namespace tavrolin::adapters::images {

/// How a photo has to be turned to be shown, as cameras write it: 1 (as it is) to 8.
class Orientation {
public:
    Orientation() = default;
    /// From a JPEG's Exif segment; 1 where there is none, or a damaged one.
    static Orientation ofJPEG(const ByteSource& bytes);

    PixelSize applied(PixelSize size) const;
    std::shared_ptr<platform::Image> applied(std::shared_ptr<platform::Image> image) const;

private:
    explicit Orientation(unsigned number) : number_(number) {}
    bool isTurned() const { return number_ >= 5; }

    unsigned number_ = 1;
};

/// Calls `visit(marker, offset, length)` for each segment in front of a JPEG's picture data, with
/// where its content begins, until it returns true or the file makes no sense.
template <class Visit>
void visitSegments(const ByteSource& bytes, Visit visit) {
    constexpr int kMaximumSegments = 4096;
    std::uint64_t offset = 2;
    for (int i = 0; i < kMaximumSegments; ++i) {
        std::array<std::uint8_t, 4> head{};
        if (bytes.read(offset, head.data(), head.size()) != head.size() || head[0] != 0xFF) return;
        if (head[1] == 0xFF) {  // a fill byte
            ++offset;
            continue;
        }
        if (head[1] == 0xDA || head[1] == 0xD9) return;
        const std::uint32_t length = static_cast<std::uint32_t>(head[2]) << 8U | head[3];
        if (length < 2 || visit(head[1], offset + 4, length - 2)) return;
        offset += 2 + length;
    }
}

}  // namespace tavrolin::adapters::images
