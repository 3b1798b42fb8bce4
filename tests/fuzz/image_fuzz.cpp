#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "adapters/images/image_decoder.h"

namespace {

using tavrolin::adapters::images::ImageDecoder;

// Every frame of a picture, the picture made to fit, and the probing of it as a file. Large
// canvases only cost time here.
void decode(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::size_t kFrames = 64;
    ImageDecoder decoder;
    const auto source = decoder.sourceWithData({bytes, size});
    for (std::size_t i = 0; source && i < source->count() && i < kFrames; ++i) {
        const auto image = source->imageAtIndex(i, source->width(), source->height());
        if (image && image->pixels.size() != std::size_t{image->width} * image->height * 4)
            std::abort();
        source->gifTimingAtIndex(i);
    }
    if (!source) return;
    constexpr std::uint32_t kWidth = 40;
    constexpr std::uint32_t kHeight = 30;
    const auto fitted = source->imageAtIndex(0, kWidth, kHeight);
    if (fitted && (fitted->width > kWidth || fitted->height > kHeight || source->width() == 0 ||
                   fitted->pixels.size() != std::size_t{fitted->width} * fitted->height * 4))
        std::abort();
}

void probe(const std::uint8_t* bytes, std::size_t size) {
    static const int file = [] {
        char name[] = "/tmp/image_fuzzXXXXXX";
        const int descriptor = ::mkstemp(name);
        ::unlink(name);
        return descriptor;
    }();
    if (::ftruncate(file, 0) != 0 || ::pwrite(file, bytes, size, 0) < 0) return;
    ImageDecoder().decodes("/proc/self/fd/" + std::to_string(file));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    decode(bytes, size);
    probe(bytes, size);
    return 0;
}
