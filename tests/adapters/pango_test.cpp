#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "adapters/images/image_decoder.h"
#include "adapters/pango/canvas.h"
#include "adapters/pango/typesetter.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::adapters::pango {
namespace {

using platform::Color;
using platform::Font;
using platform::Gradient;
using platform::ImageRef;
using platform::LineBreakMode;
using platform::Rect;
using platform::StyledText;
using platform::TextAlignment;
using platform::TextFrame;

constexpr Font kBody = Font::systemFontOfSize(15);

StyledText text(std::string_view string, const Font& font = kBody) {
    return StyledText::plain(string, {.font = font});
}

std::string repeated(std::string_view part, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += part;
    return result;
}

// The colour of a pixel as 0xRRGGBBAA.
std::uint32_t pixel(const ImageRef& image, std::uint32_t x, std::uint32_t y) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i)
        bits = bits << 8U | image->pixels[(std::size_t{y} * image->width + x) * 4 + i];
    return bits;
}

// The first and the last column in which something is drawn, between two rows; -1 when nothing is.
std::pair<int, int> inkedColumns(const ImageRef& image, std::uint32_t top, std::uint32_t bottom) {
    std::pair<int, int> columns = {-1, -1};
    for (std::uint32_t x = 0; x < image->width; ++x) {
        for (std::uint32_t y = top; y < bottom; ++y) {
            if ((pixel(image, x, y) & 0xFFU) < 64) continue;
            if (columns.first < 0) columns.first = static_cast<int>(x);
            columns.second = static_cast<int>(x);
        }
    }
    return columns;
}

constexpr std::string_view kEnglish = "The quick brown fox jumps over the lazy dog and runs on";
constexpr std::string_view kHebrew = "שלום עולם";

// --- Setting text -------------------------------------------------------------------------------

TEST(Typesetter, MeasuresTheOutlines) {
    Typesetter typesetter;
    EXPECT_NEAR(typesetter.lineHeight(kBody), 18.15, 0.01);
    EXPECT_NEAR(typesetter.lineHeight(Font::systemFontOfSize(30)), 36.31, 0.01);
    const auto layout = typesetter.layout(text("Only this weekend"), {});
    EXPECT_NEAR(layout->size().width, 130.46, 0.01);
    EXPECT_NEAR(layout->size().height, 18.15, 0.01);
    EXPECT_NEAR(layout->firstBaseline(), 14.53, 0.01);
    const auto empty = typesetter.layout(text(""), {});
    EXPECT_EQ(empty->size().width, 0);
    EXPECT_GT(empty->size().height, 17);
    EXPECT_EQ(empty->lineCount(), 1);
    // What a text measures is enough for it.
    const auto again = typesetter.layout(text("Only this weekend"), {layout->size().width});
    EXPECT_EQ(again->size(), layout->size());
}

// A box with a number, which stands for a missing character, is narrower.
TEST(Typesetter, HasTheCharactersOfEastAsia) {
    Typesetter typesetter;
    for (const char* character : {"初", "の", "신"}) {
        EXPECT_NEAR(typesetter.layout(text(character), {})->size().width, 15, 1.5) << character;
    }
}

TEST(Typesetter, SetsFacesThatDiffer) {
    Typesetter typesetter;
    const auto width = [&](const Font& font) {
        return typesetter.layout(text("iiiimmmm", font), {})->size().width;
    };
    EXPECT_GT(width(Font::boldSystemFontOfSize(15)), width(kBody));
    const auto drawn = [&](const Font& font) {
        PixelCanvas canvas(80, 20, 1);
        canvas.drawText(*typesetter.layout(text("iiiimmmm", font), {}), {0, 0}, Color::black());
        return canvas.png();
    };
    EXPECT_NE(drawn({.size = 15, .italic = true}), drawn(kBody));
    const Font mono = {.size = 15, .monospaced = true};
    EXPECT_DOUBLE_EQ(typesetter.layout(text("iiii", mono), {})->size().width,
                     typesetter.layout(text("mmmm", mono), {})->size().width);
    // A bold beginning doesn't make all of it bold.
    StyledText mixed = text("m", Font::boldSystemFontOfSize(15));
    mixed.append("mm", {.font = kBody});
    EXPECT_LT(typesetter.layout(mixed, {})->size().width,
              typesetter.layout(text("mmm", Font::boldSystemFontOfSize(15)), {})->size().width);
}

// A countdown is measured with zeros, whatever comes.
TEST(Typesetter, SetsTabularFiguresAsWideAsZeros) {
    Typesetter typesetter;
    for (const bool isBold : {false, true}) {
        const auto width = [&](const std::string& string, bool isTabular) {
            const Font font = {.size = 15, .bold = isBold, .tabularFigures = isTabular};
            return typesetter.layout(text(string, font), {})->size().width;
        };
        EXPECT_LT(width("11:11", false), width("00:00", false) - 5);
        for (int number = 10'000; number < 100'000; number += 1'011) {
            std::string digits = std::to_string(number);
            digits[2] = ':';
            const double rest = width("00:00", true) - width(digits, true);
            EXPECT_GE(rest, 0) << digits;
            EXPECT_LT(rest, 0.15) << digits;
        }
    }
}

TEST(Typesetter, BreaksAndTruncates) {
    struct Case {
        const char* what;
        std::string text;
        TextFrame frame;
        int lines;
        bool isTruncated;
    };
    using enum LineBreakMode;
    const std::string english(kEnglish);
    const std::string word = repeated("Donau", 12);
    const Case cases[] = {
        {"wraps", english, {200}, 3, false},
        {"fits its limit", english, {200, 3, truncatingTail}, 3, false},
        {"tail", english, {200, 2, truncatingTail}, 2, true},
        {"middle", english, {200, 2, truncatingMiddle}, 2, true},
        {"head", english, {200, 1, truncatingHead}, 1, true},
        {"clipped", english, {200, 1, clipping}, 1, true},
        {"cut off", english, {200, 2, wordWrapping}, 2, true},
        {"modes need a limit", english, {200, 0, truncatingTail}, 3, false},
        {"a word without a break", word, {200}, 3, false},
        {"paragraphs", "One\r\ntwo\u2029three\nfour", {200}, 4, false},
        {"a limit over paragraphs", "One\ntwo\nthree", {200, 2, truncatingTail}, 2, true},
        {"one line of two", "One\ntwo", {200, 1, truncatingTail}, 1, true},
        {"no room", "ab", {-3}, 2, false},
    };
    Typesetter typesetter;
    for (const Case& c : cases) {
        const auto layout = typesetter.layout(text(c.text), c.frame);
        EXPECT_EQ(layout->lineCount(), c.lines) << c.what;
        EXPECT_EQ(layout->isTruncated(), c.isTruncated) << c.what;
        EXPECT_NEAR(layout->size().height, c.lines * 18.153, 0.05) << c.what;
        EXPECT_TRUE(c.frame.width < 0 || layout->size().width < c.frame.width + 0.01) << c.what;
    }
    const auto width = [&](const char* string) {
        return typesetter.layout(text(string), {})->size().width;
    };
    EXPECT_EQ(width("A\x01\x7F"
                    "b\u0085\u0007"),
              width("Ab"));
    EXPECT_EQ(width("A\xC3"
                    "b"),
              width("A\uFFFD"
                    "b"));
}

// Where the last of two lines runs to the frame's edge, what is left of the text has its ellipsis.
TEST(Typesetter, EndsWrappedWordsThatDontFitInAnEllipsis) {
    Typesetter typesetter;
    const auto lastLine = [&](std::string_view string, LineBreakMode mode) {
        PixelCanvas canvas(200, 40, 1);
        canvas.drawText(*typesetter.layout(text(string), {200, 2, mode}), {0, 0}, Color::black());
        return inkedColumns(canvas.image(), 18, 40).second;
    };
    const int cut = lastLine(kEnglish, LineBreakMode::charWrapping);
    EXPECT_EQ(lastLine("The quick brown fox jumps over the lazy dog", LineBreakMode::wordWrapping),
              lastLine("The quick brown fox jumps over the lazy dog", LineBreakMode::clipping));
    EXPECT_EQ(lastLine(kEnglish, LineBreakMode::wordWrapping),
              lastLine(kEnglish, LineBreakMode::truncatingTail));
    EXPECT_NE(lastLine(kEnglish, LineBreakMode::wordWrapping), cut);
}

// The fonts reserve twice their size for what few words have.
TEST(Typesetter, SetsArabicLinesAsCloseAsTheirMarksAllow) {
    Typesetter typesetter;
    const auto height = [&](std::string_view string) {
        return typesetter.layout(text(string), {})->size().height;
    };
    EXPECT_NEAR(height("خصم عشرون بالمئة"), 1.55 * kBody.size, 0.1);
    EXPECT_GT(height("صَلَّى ٱللَّٰهُ عَلَيْهِ وَسَلَّمَۖۚۗ"), 1.55 * kBody.size);
    EXPECT_GT(height("က္ကြွူ"), 1.55 * kBody.size) << "Burmese";
}

TEST(Typesetter, BeginsWhereTheParagraphRunsFrom) {
    struct Case {
        std::string text;
        TextAlignment alignment;
        double left, right;  // where the ink is expected to begin or end; negative: not checked
    };
    const std::string hebrew(kHebrew);
    const Case cases[] = {
        {"Fox", TextAlignment::natural, 0, -1},
        {hebrew, TextAlignment::natural, -1, 200},
        {hebrew, TextAlignment::left, 0, -1},
        {"Fox", TextAlignment::right, -1, 200},
        {"123 " + hebrew, TextAlignment::natural, -1, 200},
    };
    Typesetter typesetter;
    for (const Case& c : cases) {
        PixelCanvas canvas(200, 30, 1);
        const auto layout =
            typesetter.layout(text(c.text), {.width = 200, .alignment = c.alignment});
        canvas.drawText(*layout, {0, 0}, Color::black());
        const auto [left, right] = inkedColumns(canvas.image(), 0, 30);
        EXPECT_TRUE(c.left < 0 || std::abs(left - c.left) < 3) << c.text << left;
        EXPECT_TRUE(c.right < 0 || std::abs(right - c.right) < 3) << c.text << right;
    }
}

// The work is bounded by what is set, not by what comes.
TEST(Typesetter, SetsOfHostileTextsWhatCanBeSeen) {
    const std::string texts[] = {std::string(100'000, 'a'),  repeated("word ", 20'000),
                                 repeated("\u0301", 50'000), std::string(10'000, '\n'),
                                 repeated("😀", 25'000),      std::string(100'000, '\x80'),
                                 repeated("\u2067a", 9000),  repeated("aש ", 20'000)};
    Typesetter typesetter;
    for (const std::string& hostile : texts) {
        for (const double width : {0.0, 335.0, platform::kUnlimitedWidth}) {
            for (const int limit : {0, 1, 3}) {
                for (const auto mode : {LineBreakMode::truncatingTail,
                                        LineBreakMode::truncatingHead, LineBreakMode::clipping}) {
                    const auto layout = typesetter.layout(text(hostile), {width, limit, mode});
                    EXPECT_LE(layout->lineCount(), limit > 0 ? limit : 200);
                    EXPECT_TRUE(layout->isTruncated());
                    EXPECT_LT(layout->size().width, 25'000);
                }
            }
        }
    }
    const double sizes[] = {0, -1, std::nan(""), 1e300};
    for (const double size : sizes)
        EXPECT_GT(typesetter.lineHeight(Font::systemFontOfSize(size)), 0);
    EXPECT_EQ(typesetter.layout(text("ab"), {std::nan("")})->lineCount(), 2);
}

TEST(Typesetter, KnowsTheEmojiFontByItsSystemName) {
    Typesetter typesetter;
    const auto ranges = typesetter.charactersOfFont("AppleColorEmoji");
    const auto has = [&](char32_t character) {
        return std::ranges::any_of(ranges, [&](const auto& range) {
            return range.first <= character && character <= range.second;
        });
    };
    EXPECT_TRUE(has(U'😀') && has(U'❤') && has(U'1'));
    EXPECT_FALSE(has(U'a') || has(U'я'));
    EXPECT_TRUE(std::ranges::is_sorted(ranges));
    EXPECT_TRUE(typesetter.charactersOfFont("No such font").empty());
}

// --- Drawing ------------------------------------------------------------------------------------

void drawEverything(Typesetter& typesetter, platform::Canvas& canvas) {
    canvas.fill({0, 0, 200, 100}, 0, Color::white());
    canvas.fill({10, 10, 40, 20}, 6, Gradient{{Color{1, 0, 0}, Color{0, 0, 1}}, {0, 0}, {1, 1}});
    canvas.stroke({60, 10, 40, 20}, 6, 2, Color{0, 0.5, 0});
    StyledText styled = text("Bold ", Font::boldSystemFontOfSize(15));
    styled.append("x", {.font = kBody, .color = Color{1, 0, 0}, .underline = true});
    styled.append("2", {.font = kBody, .script = platform::Script::superscript});
    styled.append(" مرحبا 😀", {.font = kBody, .backgroundColor = Color{1, 1, 0}});
    canvas.beginGroup();
    canvas.drawText(*typesetter.layout(styled, {}), {10, 40}, Color::black());
    canvas.endGroup(0.8);
}

// Whoever draws a part only leaves out the texts that lie elsewhere.
TEST(PixelCanvas, DrawsTextsWithinTheirInk) {
    Typesetter typesetter;
    StyledText styled = text("f", {.size = 40, .bold = true, .italic = true});
    styled.append(" jÅ\u0323\u0331", {.font = {.size = 9}, .underline = true});
    styled.append("x", {.font = kBody, .backgroundColor = Color{1, 0, 0}, .strikethrough = true});
    const std::pair<StyledText, TextFrame> cases[] = {
        {text("fjord Ägypten gypsy", {.size = 15, .italic = true}), {60}},
        {text("Z\u0301\u0302\u0303\u0304\u0306\u0323\u0331 ﷽ \U0001F600"), {120}},
        {text("clipped somewhere", {.size = 15, .italic = true}), {50, 1, LineBreakMode::clipping}},
        {text("right", kBody), {90, 1, LineBreakMode::clipping, TextAlignment::right}},
        {styled, {100}}};
    for (const auto& [string, frame] : cases) {
        const auto layout = typesetter.layout(string, frame);
        PixelCanvas canvas(250, 250, 2);
        canvas.drawText(*layout, {100, 100}, Color::black());
        const auto image = canvas.image();
        platform::Rect drawn;
        for (std::size_t y = 0; y < 500; ++y) {
            for (std::size_t x = 0; x < 500; ++x) {
                if (image->pixels[(y * 500 + x) * 4 + 3] == 0) continue;
                drawn = drawn.united(
                    {static_cast<double>(x) / 2 - 100, static_cast<double>(y) / 2 - 100, 0.5, 0.5});
            }
        }
        const platform::Rect ink = layout->inkBounds();
        EXPECT_FALSE(drawn.isEmpty());
        EXPECT_EQ(drawn.intersection(ink.inset(-0.5, -0.5)), drawn) << string.string;
        EXPECT_LT(ink.height, drawn.height + 20) << string.string;
    }
}

TEST(PixelCanvas, WritesTheSameBytesTwice) {
    std::string files[2];
    for (std::string& file : files) {
        Typesetter typesetter;
        PixelCanvas canvas(200, 100, 2);
        drawEverything(typesetter, canvas);
        file = canvas.png();
        const auto image = images::ImageDecoder().sourceWithData(
            {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->width(), 400U);
        EXPECT_EQ(image->height(), 200U);
        EXPECT_EQ(image->imageAtIndex(0, 400, 200)->pixels, canvas.image()->pixels);
    }
    EXPECT_EQ(files[0], files[1]);
}

// Drawn in bands, it is what smaller canvases show that are drawn as a whole. (Pictures off the
// grid of pixels may differ in the last bit: Cairo rounds where it samples them.)
TEST(PixelCanvas, OfAnyHeightShowsTheSame) {
    constexpr double kHeight = 4500;
    constexpr std::ptrdiff_t kWindow = 500;
    constexpr std::ptrdiff_t kMargin = 100;  // on both sides: what crosses an edge differs there
    Typesetter typesetter;
    auto picture = std::make_shared<platform::Image>(platform::Image{9, 9, {}});
    for (int i = 0; i < 9 * 9 * 4; ++i)
        picture->pixels.push_back(static_cast<std::uint8_t>(i * 37));
    const auto draw = [&](platform::Canvas& canvas, bool isOpaque) {
        if (isOpaque) canvas.fill({0, 0, 200, kHeight}, 0, Color{0.9, 0.95, 1});
        for (double y = 3; y < kHeight; y += 105.5) {
            canvas.save();
            canvas.translate(0, y);
            drawEverything(typesetter, canvas);
            canvas.drawImage(picture, {120, 5, 4.5, 4.5}, std::nullopt);
            canvas.restore();
        }
    };
    for (const bool isOpaque : {true, false}) {
        PixelCanvas tall(200, kHeight, 2);
        draw(tall, isOpaque);
        const ImageRef image = tall.image();
        ASSERT_EQ(image->pixels.size(), std::size_t{400} * 9000 * 4);
        for (std::ptrdiff_t top = 0; top < 9000; top += kWindow) {
            PixelCanvas window(200, kWindow / 2.0 + kMargin, 2);
            window.translate(0, (kMargin - static_cast<double>(top)) / 2);
            draw(window, isOpaque);
            const ImageRef shown = window.image();
            const auto begin = image->pixels.begin() + top * 400 * 4;
            EXPECT_TRUE(std::equal(begin, begin + kWindow * 400 * 4,
                                   shown->pixels.begin() + kMargin * 400 * 4))
                << top;
        }
        const std::string file = tall.png();
        const auto source = images::ImageDecoder().sourceWithData(
            {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
        ASSERT_NE(source, nullptr);
        EXPECT_EQ(source->imageAtIndex(0, 400, 9000)->pixels, image->pixels);
    }
}

TEST(PixelCanvas, DrawsEmojiInColourAtTheirSize) {
    Typesetter typesetter;
    const auto layout = typesetter.layout(text("😀"), {});
    EXPECT_NEAR(layout->size().width, 18.7, 1.5);
    EXPECT_LT(layout->size().height, 20);
    PixelCanvas canvas(20, 20, 2);
    canvas.drawText(*layout, {0, 0}, Color::black());
    const std::uint32_t middle = pixel(canvas.image(), 18, 14);
    EXPECT_GT(middle >> 24U, 200U);  // yellow
    EXPECT_LT(middle >> 8U & 0xFFU, 150U);
}

// A picture of 2 by 2 pixels: red, green, blue, and nothing.
ImageRef fourPixels() {
    auto image = std::make_shared<platform::Image>();
    image->width = image->height = 2;
    image->pixels = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 0, 0, 0, 0};
    return image;
}

TEST(PixelCanvas, PutsColoursWhereTheyBelong) {
    struct Pixel {
        std::uint32_t x, y, bits;
    };
    struct Case {
        const char* what;
        std::function<void(platform::Canvas&)> draw;
        std::vector<Pixel> pixels;
    };
    const Color red = Color::rgba(0xFF0000FF);
    const Case cases[] = {
        {"a fill",
         [&](auto& c) {
             c.fill({2, 3, 4, 5}, 0, red);
         },
         {{2, 3, 0xFF0000FF}, {5, 7, 0xFF0000FF}, {1, 3, 0}, {6, 7, 0}, {5, 8, 0}}},
        {"round corners",
         [&](auto& c) {
             c.fill({0, 0, 20, 20}, 99, red);
         },
         {{0, 0, 0}, {19, 19, 0}, {10, 1, 0xFF0000FF}, {1, 10, 0xFF0000FF}}},
        {"a clip and an offset, taken back",
         [&](auto& c) {
             c.save();
             c.translate(5, 0);
             c.clip({0, 0, 5, 20}, 0);
             c.fill({-5, 0, 20, 5}, 0, red);
             c.restore();
             c.restore();
             c.fill({0, 10, 20, 5}, 0, red);
         },
         {{4, 2, 0}, {5, 2, 0xFF0000FF}, {9, 2, 0xFF0000FF}, {10, 2, 0}, {0, 12, 0xFF0000FF}}},
        {"a group fades as a whole",
         [&](auto& c) {
             c.beginGroup();
             c.fill({0, 0, 20, 20}, 0, Color::black());
             c.fill({0, 0, 20, 10}, 0, red);
             c.save();  // ends with the group
             c.endGroup(0.5);
         },
         {{5, 5, 0xFF000080}, {5, 15, 0x00000080}}},
        {"a gradient",
         [&](auto& c) {
             c.fill({0, 0, 20, 20}, 0, Gradient{{red, Color::black()}, {0.5, 0}, {0.5, 0}});
             c.fill({0, 10, 20, 10}, 0, Gradient{{red, red, Color::black()}, {0, 0}, {0, 0.5}});
         },
         {{5, 5, 0x000000FF}, {5, 11, 0xFF0000FF}, {5, 17, 0x000000FF}}},
        {"an edge",
         [&](auto& c) {
             c.stroke({2, 2, 10, 10}, 0, 2, red);
         },
         {{2, 2, 0xFF0000FF}, {3, 8, 0xFF0000FF}, {4, 4, 0}, {11, 11, 0xFF0000FF}, {12, 12, 0}}},
        {"a picture on the grid",
         [&](auto& c) {
             c.drawImage(fourPixels(), {3, 4, 2, 2}, {});
         },
         {{3, 4, 0xFF0000FF}, {4, 4, 0x00FF00FF}, {3, 5, 0x0000FFFF}, {4, 5, 0}, {5, 4, 0}}},
        {"a picture beside the grid, of as many pixels",
         [&](auto& c) {
             c.drawImage(fourPixels(), {2.5, 4.4, 2.9, 2.6}, {});
         },
         {{3, 4, 0xFF0000FF}, {4, 4, 0x00FF00FF}, {3, 5, 0x0000FFFF}, {4, 5, 0}, {5, 4, 0}}},
        {"a picture that is stretched",
         [&](auto& c) {
             c.drawImage(fourPixels(), {0, 0, 20, 20}, {});
         },
         {{1, 1, 0xFF0000FF}, {18, 1, 0x00FF00FF}, {1, 18, 0x0000FFFF}, {18, 18, 0}}},
        {"a tint",
         [&](auto& c) {
             c.drawImage(fourPixels(), {0, 0, 2, 2}, Color::white());
         },
         {{0, 0, 0xFFFFFFFF}, {0, 1, 0xFFFFFFFF}, {1, 1, 0}}},
        {"what can't be drawn",
         [&](auto& c) {
             const double nan = std::nan("");
             const double infinity = std::numeric_limits<double>::infinity();
             for (const double odd : {nan, infinity, -infinity, 1e12}) {
                 c.translate(odd, 0);
                 for (const Rect& rect :
                      {Rect{odd, 0, 9, 9}, Rect{0, 0, odd, 9}, Rect{0, 0, 9, odd}}) {
                     c.fill(rect, 0, red);
                     c.fill(rect, odd, Gradient{{red, red}, {0, 0}, {odd, 1}});
                     c.stroke(rect, 0, 1, red);
                     c.drawImage(fourPixels(), rect, {});
                 }
             }
             c.fill({0, 0, 9, 9}, 0, Color{nan, 0, 0});
             c.fill({0, 0, -9, 9}, 0, red);
             c.fill({0, 0, 9, 9}, 0, Gradient{});
             c.fill({0, 0, 9, 9}, 0, Gradient{{red, Color{0, nan, 0}}, {0, 0}, {1, 1}});
             c.drawImage(nullptr, {0, 0, 9, 9}, {});
             c.drawImage(std::make_shared<platform::Image>(platform::Image{9, 9, {1}}),
                         {0, 0, 9, 9}, {});
             c.endGroup(1);
             c.fill({10, 0, 1, 1}, 0, red);
         },
         {{0, 0, 0}, {5, 5, 0}, {10, 0, 0xFF0000FF}}},
    };
    for (const Case& c : cases) {
        PixelCanvas canvas(20, 20, 1);
        c.draw(canvas);
        const ImageRef image = canvas.image();
        for (const Pixel& p : c.pixels)
            EXPECT_EQ(pixel(image, p.x, p.y), p.bits) << c.what << ' ' << p.x << ',' << p.y;
    }
}

TEST(PixelCanvas, HasLimits) {
    EXPECT_EQ(PixelCanvas(10.2, 0, 2).pixelWidth(), 21);
    EXPECT_EQ(PixelCanvas(10.2, 0, 2).pixelHeight(), 1);
    EXPECT_EQ(PixelCanvas(32767, 1, 1).pixelWidth(), 32767);
    const double infinity = std::numeric_limits<double>::infinity();
    const std::array<double, 3> bad[] = {{32768, 1, 1}, {1, 9000, 4},     {16000, 16000, 1},
                                         {10, 10, 0},   {10, 10, -1},     {10, 10, std::nan("")},
                                         {1e300, 1, 1}, {infinity, 1, 1}, {10, 10, infinity}};
    for (const auto& [width, height, scale] : bad)
        EXPECT_THROW(PixelCanvas(width, height, scale), foundation::Exception) << width;
}

TEST(VectorCanvas, NeedsNoFontsAndKeepsEmojiInColour) {
    Typesetter typesetter;
    VectorCanvas canvas(200, 100);
    drawEverything(typesetter, canvas);
    const std::string svg = canvas.svg();
    EXPECT_THAT(svg, testing::HasSubstr("width=\"200px\" height=\"100px\""));
    EXPECT_THAT(svg, testing::EndsWith("</svg>\n"));
    EXPECT_THAT(svg, testing::Not(testing::HasSubstr("<text")));
    EXPECT_THAT(svg, testing::HasSubstr("data:image/png;base64,"));  // the emoji
}

}  // namespace
}  // namespace tavrolin::adapters::pango
