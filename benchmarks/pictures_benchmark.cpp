// What pictures cost: the frame list of a GIF and drawing each of its frames once, beside giflib's
// own streaming and compositing of the same frames, and a photo of 12 megapixels that is shown
// small beside the JPEG library's own scaled decoding.

#include <gif_lib.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

// Does not include what it needs itself.
#include <jpeglib.h>

#include "adapters/images/image_decoder.h"
#include "benchmarks/ratios.h"
#include "tavrolin/service_extension/gif_image_utility.h"
#include "tests/support/pictures.h"

namespace {

using namespace tavrolin;
using benchmarks::TimeOf;
using Bytes = std::vector<std::uint8_t>;

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kFrames = 30;
constexpr int kColors = 64;
constexpr unsigned kPhotoWidth = 4000;
constexpr unsigned kPhotoHeight = 3000;
constexpr std::uint32_t kShownWidth = 750;  // 375 points at two pixels for a point
constexpr int kTurns = 15;

void require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

// --- Memory -------------------------------------------------------------------------------------

double kilobytesOf(const char* field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(field)) return std::atof(line.c_str() + std::strlen(field));
    }
    return 0;
}

// The most memory that the work takes at any time on top of what is there, in bytes.
double peakOf(const std::function<void()>& work) {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
    const double before = kilobytesOf("VmRSS:");
    work();
    return (kilobytesOf("VmHWM:") - before) * 1024;
}

// --- The GIF ------------------------------------------------------------------------------------

int append(GifFileType* gif, const GifByteType* bytes, int count) {
    auto* file = static_cast<Bytes*>(gif->UserData);
    file->insert(file->end(), bytes, bytes + count);
    return count;
}

// Rings that move over a background; every frame but the first covers the middle half only and lets
// some of what is below show through. Of two delays by turns, in hundredths.
Bytes animation(int delay, int otherDelay, int frames) {
    Bytes file;
    int error = 0;
    GifFileType* gif = EGifOpen(&file, append, &error);
    require(gif != nullptr, "no GIF can be made");
    EGifSetGifVersion(gif, true);
    ColorMapObject* colors = GifMakeMapObject(kColors, nullptr);
    for (int i = 0; i < kColors; ++i) {
        const auto shade = static_cast<GifByteType>(i * 4);
        colors->Colors[i] = {shade, static_cast<GifByteType>(255 - shade), 128};
    }
    EGifPutScreenDesc(gif, kWidth, kHeight, 6, 0, colors);
    for (int frame = 0; frame < frames; ++frame) {
        const GraphicsControlBlock control = {DISPOSE_DO_NOT, false,
                                              frame % 2 == 0 ? delay : otherDelay,
                                              frame == 0 ? NO_TRANSPARENT_COLOR : 0};
        GifByteType block[4];
        EGifGCBToExtension(&control, block);
        EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, sizeof block, block);
        const bool isWhole = frame == 0;
        const int width = isWhole ? kWidth : kWidth / 2;
        const int height = isWhole ? kHeight : kHeight / 2;
        const int left = (kWidth - width) / 2;
        const int top = (kHeight - height) / 2;
        EGifPutImageDesc(gif, left, top, width, height, false, nullptr);
        std::vector<GifPixelType> row(static_cast<std::size_t>(width));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const int dx = x + left - kWidth / 2;
                const int dy = y + top - kHeight / 2;
                row[static_cast<std::size_t>(x)] = static_cast<GifPixelType>(
                    ((dx * dx + dy * dy) / 97 + frame * 3) & (kColors - 1));
            }
            EGifPutLine(gif, row.data(), width);
        }
    }
    EGifCloseFile(gif, &error);
    GifFreeMapObject(colors);
    return file;
}

struct Reading {
    const Bytes& bytes;
    std::size_t offset = 0;
};

int readBytes(GifFileType* gif, GifByteType* to, int count) {
    auto* reading = static_cast<Reading*>(gif->UserData);
    const std::size_t now =
        std::min(static_cast<std::size_t>(count), reading->bytes.size() - reading->offset);
    std::memcpy(to, reading->bytes.data() + reading->offset, now);
    reading->offset += now;
    return static_cast<int>(now);
}

using Show = std::function<void(std::size_t, const Bytes&)>;

// Of files without surprises: frames that stay, within the canvas, not interlaced.
void playBare(const Bytes& file, const Show& show) {
    Reading reading{file};
    int error = 0;
    GifFileType* gif = DGifOpen(&reading, readBytes, &error);
    require(gif != nullptr, "the GIF can't be opened");
    std::size_t frames = 0;
    Bytes canvas(std::size_t{kWidth} * kHeight * 4);
    Bytes row(kWidth);
    int transparent = NO_TRANSPARENT_COLOR;
    for (GifRecordType record = UNDEFINED_RECORD_TYPE; record != TERMINATE_RECORD_TYPE;) {
        require(DGifGetRecordType(gif, &record) == GIF_OK, "the GIF can't be read");
        if (record == EXTENSION_RECORD_TYPE) {
            int code = 0;
            GifByteType* block = nullptr;
            DGifGetExtension(gif, &code, &block);
            GraphicsControlBlock control{};
            if (code == GRAPHICS_EXT_FUNC_CODE) {
                DGifExtensionToGCB(block[0], block + 1, &control);
                transparent = control.TransparentColor;
            }
            while (block != nullptr)
                DGifGetExtensionNext(gif, &block);
        } else if (record == IMAGE_DESC_RECORD_TYPE) {
            DGifGetImageDesc(gif);
            const GifImageDesc& frame = gif->Image;
            for (int y = 0; y < frame.Height; ++y) {
                DGifGetLine(gif, row.data(), frame.Width);
                std::uint8_t* to =
                    canvas.data() + (std::size_t{kWidth} * static_cast<unsigned>(frame.Top + y) +
                                     static_cast<unsigned>(frame.Left)) *
                                        4;
                for (int x = 0; x < frame.Width; ++x, to += 4) {
                    const int color = row[static_cast<std::size_t>(x)];
                    if (color == transparent) continue;
                    const GifColorType& rgb = gif->SColorMap->Colors[color];
                    to[0] = rgb.Red;
                    to[1] = rgb.Green;
                    to[2] = rgb.Blue;
                    to[3] = 255;
                }
            }
            show(frames++, canvas);
        }
    }
    DGifCloseFile(gif, &error);
}

AnimatedImage frameList(const Bytes& file) {
    auto list = CVNGifImageUtility::animatedImageWithAnimatedGIFReleasingImageSource(
        adapters::images::ImageDecoder().sourceWithData(file));
    require(list.has_value(), "the GIF has no list of frames");
    return std::move(*list);
}

// The list's frames as they are shown one after the other, each decoded once.
void play(const AnimatedImage& list, const Show& show) {
    for (std::size_t i = 0; i < list.frames.size(); ++i) {
        const std::uint32_t frame = list.frames[i];
        if (i > 0 && list.frames[i - 1] == frame) continue;
        show(frame, list.source->imageAtIndex(frame, kWidth, kHeight)->pixels);
    }
}

void measureGIF() {
    const Bytes even = animation(10, 10, kFrames);
    std::vector<Bytes> expected;
    playBare(even, [&](std::size_t, const Bytes& pixels) { expected.push_back(pixels); });
    std::size_t shown = 0;
    play(frameList(even), [&](std::size_t frame, const Bytes& pixels) {
        require(pixels == expected[frame], "a frame differs");
        ++shown;
    });
    require(shown == kFrames, "not all frames came");
    const Show nothing = [](std::size_t, const Bytes&) {};
    const auto times = benchmarks::timesInTurns(
        TimeOf::processor, kTurns, 4,
        {[&] { play(frameList(even), nothing); }, [&] { playBare(even, nothing); }});
    std::printf("GIF of %d frames of %d by %d: %.2f ms (giflib %.2f ms)\n", kFrames, kWidth,
                kHeight, benchmarks::median(times[0]) / 1e3, benchmarks::median(times[1]) / 1e3);
    for (const int frames : {kFrames, 10 * kFrames}) {
        for (const int delay : {10, 7, 1}) {
            const Bytes file = animation(delay, 100, frames);
            std::size_t entries = 0;
            const double peak = peakOf([&] {
                const AnimatedImage list = frameList(file);
                entries = list.frames.size();
                play(list, nothing);
            });
            std::printf(
                "GIF of %3d frames, a list of %5zu: peak %.2f MB (a frame's pixels "
                "%.2f MB, the file %.2f MB)\n",
                frames, entries, peak / 1e6, kWidth * kHeight * 4 / 1e6,
                static_cast<double>(file.size()) / 1e6);
        }
    }
    benchmarks::printRatio("gif_frames", benchmarks::medianRatio(times[0], times[1]), 1.1);
}

// --- The photo ----------------------------------------------------------------------------------

// A quarter of the size each way, as the library makes it.
Bytes barePhoto(const Bytes& file) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), file.size());
    jpeg_read_header(&info, TRUE);
    info.scale_num = 2;
    info.scale_denom = 8;
    info.out_color_space = JCS_EXT_RGBA;
    jpeg_start_decompress(&info);
    Bytes pixels(std::size_t{info.output_width} * info.output_height * 4);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = pixels.data() + std::size_t{info.output_scanline} * info.output_width * 4;
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return pixels;
}

void measurePhoto(const std::string& kind, bool isProgressive, double mostMemory, double mostTime) {
    const std::string text = test::jpeg(kPhotoWidth, kPhotoHeight, {3'000'000, isProgressive});
    const Bytes file(text.begin(), text.end());
    const auto source = adapters::images::ImageDecoder().sourceWithData(file);
    require(source != nullptr, "the photo can't be opened");
    platform::ImageRef image;
    const double peak = peakOf([&] { image = source->imageAtIndex(0, kShownWidth, kPhotoHeight); });
    const auto shown = static_cast<double>(image->pixels.size());
    std::printf("%s of 12 megapixels shown in %u by %u: peak %.2f MB (the shown pixels %.2f MB)\n",
                kind.c_str(), image->width, image->height, peak / 1e6, shown / 1e6);
    const auto times = benchmarks::timesInTurns(
        TimeOf::processor, kTurns, 1,
        {[&] { source->imageAtIndex(0, kShownWidth, kPhotoHeight); }, [&] { barePhoto(file); }});
    std::printf("%s decoded in %.1f ms (the JPEG library, scaled, %.1f ms)\n", kind.c_str(),
                benchmarks::median(times[0]) / 1e3, benchmarks::median(times[1]) / 1e3);
    benchmarks::printRatio(kind + "_peak_to_shown_pixels", peak / shown, mostMemory);
    benchmarks::printRatio(kind + "_decoding", benchmarks::medianRatio(times[0], times[1]),
                           mostTime);
}

}  // namespace

int main() {
    try {
        measureGIF();
        measurePhoto("photo", false, 2, 1.3);
        // With a window of coefficients, the others in a file; the library has all in memory.
        measurePhoto("progressive_photo", true, 4, 1.7);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pictures_benchmark: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
