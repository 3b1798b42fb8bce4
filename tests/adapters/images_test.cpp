#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "adapters/images/image_decoder.h"
#include "tests/support/pictures.h"

namespace tavrolin::adapters::images {
namespace {

using platform::ImageRef;
using platform::ImageSource;
using test::gif;
using test::GIFFrame;
using test::plainFrame;

std::unique_ptr<ImageSource> opened(const std::string& file) {
    return ImageDecoder().sourceWithData(
        {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
}

// At its own size.
ImageRef wholeImage(ImageSource& source, std::size_t index = 0) {
    return source.imageAtIndex(index, UINT32_MAX, UINT32_MAX);
}

// Each frame in letters; "-" for one that can't be decoded.
std::vector<std::string> framesOf(ImageSource& source) {
    std::vector<std::string> frames;
    for (std::size_t i = 0; i < source.count(); ++i) {
        const ImageRef image = wholeImage(source, i);
        frames.push_back(image ? test::letters(image->pixels) : "-");
    }
    return frames;
}

// --- GIF ----------------------------------------------------------------------------------------

TEST(GIFFrames, BuildUpOnTheCanvasAndAreTakenAwayAsTheyAsk) {
    struct Case {
        const char* what;
        unsigned disposal;  // of the second frame
        std::vector<std::string> frames;
    };
    // Red all over; then a green and a transparent pixel at the right; then one blue pixel.
    const Case cases[] = {
        {"unspecified", 0, {"rrrr", "rgrr", "bgrr"}},
        {"left in place", 1, {"rrrr", "rgrr", "bgrr"}},
        {"cleared", 2, {"rrrr", "rgrr", "b.r."}},
        {"what was there before", 3, {"rrrr", "rgrr", "brrr"}},
    };
    for (const Case& c : cases) {
        const auto source = opened(gif(2, 2,
                                       {plainFrame(2, 2, 'r', 10),
                                        {"g.", 1, 0, 1, 2, 10, c.disposal},
                                        {"b", 0, 0, 1, 1, 10}}));
        ASSERT_NE(source, nullptr);
        EXPECT_EQ(framesOf(*source), c.frames) << c.what;
    }
}

TEST(GIFFrames, KeepToTheCanvas) {
    const auto source = opened(gif(2, 2,
                                   {plainFrame(2, 2, 'k', 1),
                                    {"rgbwrgbwr", 1, 1, 3, 3, 1, 3},
                                    {"gggg", 5, 7, 2, 2, 1, 2},
                                    {"w", 0, 0, 1, 1, 1}}));
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(framesOf(*source), (std::vector<std::string>{"kkkk", "kkkr", "kkkk", "wkkk"}));
}

TEST(GIFFrames, InterlacedRowsComeInTheirPlaces) {
    for (const unsigned height : {1U, 2U, 3U, 5U, 8U, 11U, 20U}) {
        std::string rows;
        for (unsigned y = 0; y < height; ++y)
            rows += "rgbwk"[y % 5];
        GIFFrame frame = {rows, 0, 0, 1, height};
        frame.interlaced = true;
        const auto source = opened(gif(1, height, {frame}));
        ASSERT_NE(source, nullptr);
        EXPECT_EQ(framesOf(*source), std::vector<std::string>{rows}) << height;
    }
}

TEST(GIFFrames, CanBeAskedForInAnyOrder) {
    const auto source = opened(
        gif(1, 1, {plainFrame(1, 1, 'r', 1), plainFrame(1, 1, 'g', 1), plainFrame(1, 1, 'b', 1)}));
    std::string seen;
    for (const std::size_t index : {2U, 0U, 1U, 1U, 2U, 0U})
        seen += test::letters(wholeImage(*source, index)->pixels);
    EXPECT_EQ(seen, "brggbr");
    EXPECT_EQ(wholeImage(*source, 3), nullptr);
}

TEST(GIFTiming, IsWhatTheFileSaysAndWhatPlayersMakeOfIt) {
    struct Case {
        std::optional<unsigned> hundredths;
        std::optional<double> unclamped;
        std::optional<double> clamped;
    };
    const Case cases[] = {{0, 0.0, 0.1},  {1, 0.01, 0.1},          {2, 0.02, 0.02},
                          {10, 0.1, 0.1}, {65535, 655.35, 655.35}, {{}, {}, {}}};
    for (const Case& c : cases) {
        const auto source = opened(gif(1, 1, {plainFrame(1, 1, 'r', c.hundredths)}));
        const auto timing = source->gifTimingAtIndex(0);
        ASSERT_TRUE(timing);
        EXPECT_EQ(timing->unclampedDelayTime, c.unclamped);
        EXPECT_EQ(timing->delayTime, c.clamped);
        EXPECT_FALSE(source->gifTimingAtIndex(1));
    }
}

TEST(GIFFrames, OfATruncatedFileAreKeptFromTheFirstOn) {
    const std::vector<std::string> whole = {"rrrrrrrrr", "ggggggggg", "bbbbbbbbb"};
    const std::string file =
        gif(3, 3, {plainFrame(3, 3, 'r', 1), plainFrame(3, 3, 'g', 1), plainFrame(3, 3, 'b', 1)});
    std::size_t most = 0;
    for (std::size_t length = 0; length < file.size(); ++length) {
        const auto source = opened(file.substr(0, length));
        if (!source) {
            EXPECT_EQ(most, 0U) << length;
            continue;
        }
        ASSERT_GE(source->count(), most) << length;
        most = source->count();
        for (std::size_t i = 1; i < most; ++i)
            EXPECT_EQ(framesOf(*source)[i], whole[i]) << length;
    }
    EXPECT_EQ(most, 3U);
    // Rows of the first frame that came are shown.
    const std::string tall = gif(1, 1000, {plainFrame(1, 1000, 'r', 1)});
    const auto part = opened(tall.substr(0, tall.size() / 2));
    ASSERT_NE(part, nullptr);
    const std::string rows = framesOf(*part)[0];
    EXPECT_THAT(rows, testing::StartsWith("rrrr"));
    EXPECT_THAT(rows, testing::EndsWith("...."));
}

TEST(GIFFrames, ThatAreDamagedShowWhatStoodBeforeThem) {
    const GIFFrame first = plainFrame(2, 40, 'r', 1);
    std::string rows;
    for (int i = 0; i < 20; ++i)
        rows += "gbwk";
    const std::size_t start = gif(2, 40, {first}).size() - 1;
    std::string file = gif(2, 40, {first, {rows, 0, 0, 2, 40, 1, 2}, plainFrame(2, 40, 'b', 1)});
    file.replace(start + 32, 8, 8, '\xFF');  // in the middle of the second frame's codes
    const auto source = opened(file);
    ASSERT_NE(source, nullptr);
    const std::string red(std::size_t{2} * 40, 'r');
    EXPECT_EQ(framesOf(*source), (std::vector<std::string>{red, red, red}));
    EXPECT_EQ(framesOf(*source), (std::vector<std::string>{red, red, red}));
}

TEST(GIFFrames, EndAtTheLimit) {
    const std::vector<GIFFrame> frames(5000, plainFrame(1, 1, 'r', 1));
    const auto source = opened(gif(1, 1, frames));
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->count(), 4096U);
    EXPECT_NE(wholeImage(*source, 4095), nullptr);
}

// --- Pictures at the size that is shown ----------------------------------------------------------

struct Still {
    const char* what;
    std::string file;
    bool hasAlpha;
};

std::vector<Still> stills(unsigned width, unsigned height, std::size_t bytes = 0) {
    return {{"jpeg", test::jpeg(width, height, {bytes, false}), false},
            {"progressive jpeg", test::jpeg(width, height, {bytes, true}), false},
            {"png", test::png(width, height, {bytes, false}), true},
            {"interlaced png", test::png(width, height, {bytes, true}), true},
            {"webp", test::webp(width, height, {bytes, false}), true},
            {"lossless webp", test::webp(width, height, {bytes, true}), true}};
}

// With the note that cameras put in front.
std::string withOrientation(const std::string& jpeg, unsigned number) {
    const std::string exif(
        "\xFF\xE1\0\x22"
        "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0",
        29);
    return jpeg.substr(0, 2) + exif + static_cast<char>(number) + std::string(6, '\0') +
           jpeg.substr(2);
}

TEST(Pictures, KeepTheirProportionsAndColoursAtEverySize) {
    struct Case {
        std::uint32_t width, height;        // asked for
        std::uint32_t itsWidth, itsHeight;  // given
    };
    const Case cases[] = {{16, 1000, 16, 12}, {1000, 7, 9, 7},    {61, 47, 61, 46},
                          {64, 48, 64, 48},   {900, 900, 64, 48}, {0, 0, 1, 1}};
    for (const Still& still : stills(64, 48)) {
        const auto source = opened(still.file);
        ASSERT_NE(source, nullptr) << still.what;
        EXPECT_EQ(source->width(), 64U) << still.what;
        EXPECT_EQ(source->height(), 48U) << still.what;
        EXPECT_EQ(source->count(), 1U) << still.what;
        EXPECT_EQ(source->imageAtIndex(1, 64, 48), nullptr) << still.what;
        EXPECT_FALSE(source->gifTimingAtIndex(0)) << still.what;
        for (const Case& c : cases) {
            const ImageRef image = source->imageAtIndex(0, c.width, c.height);
            ASSERT_NE(image, nullptr) << still.what;
            ASSERT_EQ(image->width, c.itsWidth) << still.what << ' ' << c.width;
            ASSERT_EQ(image->height, c.itsHeight) << still.what << ' ' << c.width;
            ASSERT_EQ(image->pixels.size(), std::size_t{image->width} * image->height * 4);
            for (std::uint32_t y = 1; y + 1 < image->height; y += 2) {
                for (std::uint32_t x = 1; x + 1 < image->width; ++x) {
                    const std::uint8_t* pixel = image->pixels.data() + (y * image->width + x) * 4;
                    const double red = (x + 0.5) / image->width * 64 - 0.5;
                    const double green = (y + 0.5) / image->height * 48 - 0.5;
                    ASSERT_NEAR(pixel[0], red * 255 / 63, 9) << still.what << ' ' << c.width;
                    ASSERT_NEAR(pixel[1], green * 255 / 47, 9) << still.what << ' ' << c.width;
                    ASSERT_NEAR(pixel[2], 128, 8) << still.what << ' ' << c.width;
                    if (std::abs(red - 31.5) < 64.0 / image->width) continue;
                    ASSERT_NEAR(pixel[3], still.hasAlpha && red < 32 ? 128 : 255, 2) << still.what;
                }
            }
        }
    }
}

// The first frame comes row by row, the others from the canvas.
TEST(Pictures, AreTheSameFrameWhicheverWayItCame) {
    const std::string rows = "wwrrwwrrggbbggbbkkwwkkww....rr..";  // four pixels wide
    for (const bool isInterlaced : {false, true}) {
        GIFFrame frame = {rows, 2, 4, 4, 8, 1, 1, isInterlaced};
        const auto still = opened(gif(8, 14, {frame}));
        const auto second = opened(gif(8, 14, {{".", 0, 0, 1, 1, 1}, frame}));
        for (const std::uint32_t width : {1U, 3U, 4U, 7U, 8U}) {
            const ImageRef streamed = still->imageAtIndex(0, width, 100);
            const ImageRef composed = second->imageAtIndex(1, width, 100);
            ASSERT_EQ(streamed->width, width);
            ASSERT_EQ(streamed->pixels.size(), composed->pixels.size());
            for (std::size_t i = 0; i < streamed->pixels.size(); ++i)
                ASSERT_NEAR(streamed->pixels[i], composed->pixels[i], 1) << width << ' ' << i;
        }
        EXPECT_EQ(test::letters(second->imageAtIndex(1, 4, 7)->pixels).substr(8, 8), ".wr..gb.");
    }
}

// What is transparent has no share in the colour.
TEST(Pictures, AverageWhatIsSeen) {
    const auto source = opened(gif(2, 2, {{"r.r.", 0, 0, 2, 2, 1}}));
    const ImageRef image = source->imageAtIndex(0, 1, 1);
    EXPECT_EQ(image->pixels, (std::vector<std::uint8_t>{255, 0, 0, 128}));
}

TEST(Pictures, CutShortComeAsFarAsTheyGo) {
    for (const Still& still : stills(200, 200, 40'000)) {
        const auto source = opened(still.file.substr(0, still.file.size() * 9 / 10));
        ASSERT_NE(source, nullptr) << still.what;
        for (const std::uint32_t side : {200U, 50U}) {
            const ImageRef image = source->imageAtIndex(0, side, side);
            ASSERT_NE(image, nullptr) << still.what;
            ASSERT_EQ(image->height, side);
            // On the left red is dark, on the right it is bright, whatever the noise.
            const std::uint8_t* row = image->pixels.data() + std::size_t{2} * side * 4;
            const auto sample = static_cast<int>(side / 4);
            int difference = 0;
            for (int i = 0; i < sample; ++i)
                difference += row[(sample * 3 + i) * 4] - row[i * 4];
            EXPECT_GT(difference, sample * 50) << still.what << ' ' << side;
        }
    }
}

TEST(Pictures, AreTurnedAsTheCameraWasHeld) {
    // The corners of what is shown: 'k' where both red and green are low, 'r' and 'g' where one is
    // high, 'y' where both are. As the file has them: "krgy", by rows.
    const std::string expected[] = {"krgy", "rkyg", "ygrk", "gykr", "kgry", "gkyr", "yrgk", "rykg"};
    for (unsigned number = 0; number <= 9; ++number) {
        const auto source = opened(withOrientation(test::jpeg(64, 32), number));
        ASSERT_NE(source, nullptr);
        const bool isTurned = number >= 5 && number <= 8;
        EXPECT_EQ(source->width(), isTurned ? 32U : 64U) << number;
        EXPECT_EQ(source->height(), isTurned ? 64U : 32U) << number;
        const ImageRef image = source->imageAtIndex(0, isTurned ? 8 : 16, 100);
        ASSERT_EQ(image->width, isTurned ? 8U : 16U) << number;
        ASSERT_EQ(image->height, isTurned ? 16U : 8U) << number;
        std::string seen;
        for (const std::uint32_t y : {0U, image->height - 1}) {
            for (const std::uint32_t x : {0U, image->width - 1}) {
                const std::uint8_t* pixel = image->pixels.data() + (y * image->width + x) * 4;
                seen +=
                    pixel[0] < 128 ? (pixel[1] < 128 ? 'k' : 'g') : (pixel[1] < 128 ? 'r' : 'y');
            }
        }
        EXPECT_EQ(seen, number >= 1 && number <= 8 ? expected[number - 1] : "krgy") << number;
    }
}

// --- Progressive photos whose coefficients are many ---------------------------------------------

class LargeProgressivePhoto : public testing::Test {
protected:
    ~LargeProgressivePhoto() override { ::unsetenv("TMPDIR"); }

    static ImageRef decoded() {
        // The colours' rows of blocks don't go into the picture evenly.
        static const std::string file = test::jpeg(2011, 1501, {0, true});
        return opened(file)->imageAtIndex(0, 500, 500);
    }
};

TEST_F(LargeProgressivePhoto, ComeOutTheSameFromAFileAndFromMemory) {
    const ImageRef fromFile = decoded();
    ::setenv("TMPDIR", "/nowhere", 1);
    const ImageRef fromMemory = decoded();
    ASSERT_NE(fromFile, nullptr);
    ASSERT_NE(fromMemory, nullptr);
    EXPECT_EQ(fromFile->pixels, fromMemory->pixels);
}

TEST_F(LargeProgressivePhoto, AreNotDecodedOnAFullDisk) {
    ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit little = {1'000'000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &little), 0);
    EXPECT_EQ(decoded(), nullptr);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_NE(decoded(), nullptr);
}

// --- Hostile files ------------------------------------------------------------------------------

TEST(HostilePictures, OfMorePixelsThanTheirBytesCanHoldAreRefused) {
    std::string canvas = gif(1, 1, {plainFrame(1, 1, 'r', 1)});
    canvas.replace(6, 4, "\xFF\x7F\xFF\x0B");  // 32767 by 3071
    std::string jpeg = test::jpeg(8, 8);
    jpeg.replace(jpeg.find("\xFF\xC0") + 5, 4, "\x25\x25\x25\x25");  // 9509 by 9509
    std::string png = test::png(8, 8);
    png.replace(16, 8, std::string("\0\0\x27\0\0\0\x27\0", 8));  // 9984 by 9984, its sum now wrong
    for (const std::string& file : {canvas, jpeg, png}) {
        const auto source = opened(file);
        EXPECT_TRUE(source == nullptr || wholeImage(*source) == nullptr);
        EXPECT_TRUE(source == nullptr || source->imageAtIndex(0, 10, 10) == nullptr);
    }
}

TEST(HostilePictures, DamagedAnywhereAreSurvived) {
    std::vector<Still> files = stills(24, 20);
    files.push_back({"photo", withOrientation(test::jpeg(24, 20), 6), false});
    files.push_back(
        {"gif",
         gif(6, 6,
             {plainFrame(6, 6, 'r', 5), {"gggg", 2, 2, 2, 2, 5, 3}, {"bbbb", 1, 1, 2, 2, 5, 2}}),
         true});
    for (const Still& original : files) {
        for (std::size_t i = 0; i < original.file.size(); ++i) {
            for (const char value : {'\0', '\x7F', '\xFF'}) {
                std::string file = original.file;
                file[i] = value;
                const auto source = opened(file);
                for (std::size_t frame = 0; source && frame < source->count(); ++frame) {
                    const ImageRef image = wholeImage(*source, frame);
                    ASSERT_TRUE(!image || image->pixels.size() ==
                                              std::size_t{image->width} * image->height * 4)
                        << original.what << ", byte " << i;
                }
                const ImageRef fitted = source ? source->imageAtIndex(0, 7, 5) : nullptr;
                ASSERT_TRUE(!fitted || (fitted->width <= 7 && fitted->height <= 5))
                    << original.what << ", byte " << i;
            }
        }
    }
}

// --- Probing files ------------------------------------------------------------------------------

class DecodesTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = std::filesystem::temp_directory_path() / "imagesXXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    bool decodes(const std::string& file) {
        const std::filesystem::path path = folder_ / "picture.jpg";
        std::ofstream(path, std::ios::binary) << file;
        return ImageDecoder().decodes(path.string());
    }
    std::unique_ptr<ImageSource> openedFile(const std::string& bytes) const {
        const auto path = folder_ / "picture";
        std::ofstream(path, std::ios::binary) << bytes;
        return ImageDecoder().sourceWithFile(path.string());
    }

    std::filesystem::path folder_;
};

// A carousel holds hundreds of them.
TEST_F(DecodesTest, PicturesThatAreNotReadHoldNoFileOpen) {
    const std::filesystem::directory_iterator end;
    const auto openFiles = [&] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), end);
    };
    const auto before = openFiles();
    std::vector<Still> files = stills(30, 20);
    files.push_back({"gif", gif(1, 1, {plainFrame(1, 1, 'r', 1), plainFrame(1, 1, 'b', 1)}), true});
    for (const Still& file : files) {
        const auto source = openedFile(file.file);
        ASSERT_NE(source, nullptr) << file.what;
        const std::size_t last = source->count() - 1;
        const ImageRef first = wholeImage(*source, last);
        ASSERT_NE(first, nullptr) << file.what;
        EXPECT_EQ(openFiles(), before) << file.what;
        source->forgetFrames();
        EXPECT_EQ(wholeImage(*source, last)->pixels, first->pixels) << file.what;
        source->forgetFrames();
        std::filesystem::remove(folder_ / "picture");
        EXPECT_EQ(wholeImage(*source, last), nullptr) << file.what;
    }
}

// Other processes write into the media folder.
TEST_F(DecodesTest, AFileThatIsAnotherOneByNowHarmsNothing) {
    std::vector<Still> files = stills(30, 20);
    for (const Still& large : stills(400, 300))
        files.push_back(large);
    for (const std::uint16_t side : {std::uint16_t{2}, std::uint16_t{200}}) {
        const GIFFrame frame = plainFrame(side, side, 'r', 1);
        files.push_back({"gif", gif(side, side, {frame, frame}), true});
    }
    for (const Still& before : files) {
        for (const Still& after : files) {
            const auto source = openedFile(before.file);
            ASSERT_NE(source, nullptr) << before.what;
            const auto path = folder_ / "picture";
            std::ofstream(path, std::ios::binary) << after.file;
            for (const std::uint32_t size : {7U, 1000U}) {
                for (std::size_t i = 0; i < source->count(); ++i) {
                    const ImageRef image = source->imageAtIndex(i, size, size);
                    if (!image) continue;
                    EXPECT_EQ(image->pixels.size(), std::size_t{4} * image->width * image->height)
                        << before.what << " " << after.what;
                }
            }
        }
    }
}

TEST_F(DecodesTest, BelievesBytesNotNames) {
    for (const Still& still : stills(300, 200)) {
        EXPECT_TRUE(decodes(still.file)) << still.what;
        EXPECT_FALSE(decodes(still.file.substr(0, 20))) << still.what;
        EXPECT_FALSE(decodes(still.file.substr(0, 40))) << still.what;
    }
    EXPECT_TRUE(decodes(test::jpeg(3, 2)));
    EXPECT_TRUE(decodes(test::jpeg(40, 2000, {0, true})));
    const std::string animation = gif(3, 30, {plainFrame(3, 30, 'r', 1)});
    EXPECT_TRUE(decodes(animation));
    EXPECT_FALSE(decodes(animation.substr(0, 30)));
    EXPECT_FALSE(decodes(""));
    EXPECT_FALSE(decodes("<html><body>Not found</body></html>"));
    EXPECT_FALSE(decodes("\xFF\xD8\xFF\xE0 and no more than that"));
}

TEST_F(DecodesTest, TakesRegularFilesOnly) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe.jpg").c_str(), 0600), 0);
    EXPECT_FALSE(ImageDecoder().decodes((folder_ / "pipe.jpg").string()));
    EXPECT_FALSE(ImageDecoder().decodes(folder_.string()));
    EXPECT_FALSE(ImageDecoder().decodes((folder_ / "missing.jpg").string()));
    EXPECT_EQ(ImageDecoder().sourceWithFile((folder_ / "missing.gif").string()), nullptr);
}

}  // namespace
}  // namespace tavrolin::adapters::images
