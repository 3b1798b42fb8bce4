#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Picture files for tests, made on the spot.
namespace tavrolin::test {

struct PictureOptions {
    /// The file gets about as many bytes (never fewer than the smooth picture takes); 0: as few as
    /// it takes.
    std::size_t bytes = 0;
    /// A progressive JPEG, an interlaced PNG, a lossless WebP.
    bool fancy = false;
};

/// A smooth picture: red grows from left to right, green from top to bottom, both from 0 to 255;
/// blue is 128 throughout. With `bytes`, noise lies over it.
std::string jpeg(unsigned width, unsigned height, const PictureOptions& options = {});
/// The same; alpha is 128 in the left half and 255 in the right one.
std::string png(unsigned width, unsigned height, const PictureOptions& options = {});
std::string webp(unsigned width, unsigned height, const PictureOptions& options = {});

/// One frame, drawn in letters: 'r', 'g', 'b', 'w' (white), 'k' (black) and '.' (transparent), row
/// after row, as many as it has pixels.
struct GIFFrame {
    std::string letters;
    unsigned left = 0;
    unsigned top = 0;
    unsigned width = 0;
    unsigned height = 0;
    std::optional<unsigned> delay{};  // in hundredths; nothing: no graphics control at all
    unsigned disposal = 0;
    bool interlaced = false;
};
std::string gif(unsigned width, unsigned height, const std::vector<GIFFrame>& frames);
/// A frame of one colour that covers the canvas.
GIFFrame plainFrame(unsigned width, unsigned height, char letter, std::optional<unsigned> delay);

/// The pixels of a picture in the letters of GIFFrame; '?' for any other colour.
std::string letters(const std::vector<std::uint8_t>& rgba);

}  // namespace tavrolin::test
