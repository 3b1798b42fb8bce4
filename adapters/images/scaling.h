#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::adapters::images {

struct PixelSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool operator==(const PixelSize&) const = default;
};

/// The largest size of the same proportions within `bounds`, at most the picture's own, at least a
/// pixel each way.
PixelSize fittedSize(PixelSize picture, PixelSize bounds);

/// Makes a picture smaller while its rows come, from the top: each pixel is the average of what it
/// covers. Holds one row besides the result.
class Reduction {
public:
    /// `to` is at most `from` each way.
    Reduction(PixelSize from, PixelSize to);

    /// A row of `from.width` pixels of 4 bytes.
    void addRow(const std::uint8_t* row);
    /// What became of the rows so far; those that are missing are transparent.
    std::shared_ptr<platform::Image> take();

private:
    void sumAcross(const std::uint8_t* row);
    void addToRow(float share);
    void finishRow();

    PixelSize from_;
    PixelSize to_;
    std::uint32_t nextRow_ = 0;       // of the picture
    std::uint32_t finishedRows_ = 0;  // of the result
    std::vector<float> across_;       // the present row, reduced in width
    std::vector<float> sums_;         // the present row of the result
    std::shared_ptr<platform::Image> image_;
};

/// The same of pixels that come in any order. Holds 16 bytes for each pixel of the result besides
/// it.
class ScatteredReduction {
public:
    ScatteredReduction(PixelSize from, PixelSize to);

    /// `count` pixels of row `y` of the picture: the one at `first`, and each `step` further.
    void addPixels(const std::uint8_t* pixels, std::uint32_t count, std::uint32_t y,
                   std::uint32_t first, std::uint32_t step);
    /// What became of the pixels so far; those that are missing are transparent.
    std::shared_ptr<platform::Image> take();

private:
    PixelSize from_;
    PixelSize to_;
    std::vector<float> sums_;
};

std::shared_ptr<platform::Image> reduced(const platform::Image& image, PixelSize to);

}  // namespace tavrolin::adapters::images
