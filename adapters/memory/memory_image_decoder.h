#pragma once

#include "tavrolin/platform/files.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::adapters::memory {

enum class PictureKind { none, gif, jpeg, png, webp };

/// What kind of picture the bytes begin as.
PictureKind pictureKindOf(foundation::Value::Bytes bytes);

/// Takes whatever begins like a GIF, a JPEG, a PNG or a WebP for a picture of one transparent
/// pixel; a GIF's frame lasts a tenth of a second. Threads: any.
class MemoryImageDecoder final : public platform::ImageDecoder {
public:
    /// The files must outlive the decoder.
    explicit MemoryImageDecoder(const platform::Files& files) : files_(files) {}

    std::unique_ptr<platform::ImageSource> sourceWithData(foundation::Value::Bytes bytes) override;
    std::unique_ptr<platform::ImageSource> sourceWithFile(std::string_view path) override;
    bool decodes(std::string_view path) override;

private:
    const platform::Files& files_;
};

}  // namespace tavrolin::adapters::memory
