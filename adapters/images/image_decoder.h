#pragma once

#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::adapters::images {

/// GIF, JPEG, PNG and still WebP.
///
/// Files are taken as hostile: no picture of more than 100 megapixels, no more than the first 4,096
/// frames, and no memory for a picture that the file's bytes can't fill. Files are read as they are
/// decoded, never as a whole (a WebP excepted), and open no longer than that.
///
/// A photo is turned as its camera says. Made to fit, a JPEG is decoded in eighths of its size, and
/// all others row by row, so that none takes the memory of the whole picture; but a lossless WebP
/// does, an interlaced PNG of which more than a quarter is shown, and a GIF from its second frame
/// on. What a large progressive JPEG needs besides goes into a file in the folder for temporary
/// files (TMPDIR); where none can be made, into memory.
///
/// A file that was cut short keeps what is there: a GIF its whole frames, a still picture and a
/// GIF's first frame the rows that came. From a damaged frame of a GIF on, the one before it stays.
class ImageDecoder : public platform::ImageDecoder {
public:
    std::unique_ptr<platform::ImageSource> sourceWithData(foundation::Value::Bytes bytes) override;
    std::unique_ptr<platform::ImageSource> sourceWithFile(std::string_view path) override;
    /// Decodes the header and the first rows.
    bool decodes(std::string_view path) override;
};

}  // namespace tavrolin::adapters::images
