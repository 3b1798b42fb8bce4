#include "tavrolin/ui/text_direction.h"

#include <algorithm>
#include <array>

#include "tavrolin/foundation/utf8.h"

namespace tavrolin::ui {

namespace {

// First and last characters.
struct Range {
    char32_t first;
    char32_t last;
};

template <std::size_t N>
bool isIn(const std::array<Range, N>& ranges, char32_t character) {
    return std::ranges::any_of(ranges, [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

// Letters of the scripts that are written from right to left, and the marks that stand for one.
constexpr std::array<Range, 14> kRightToLeft = {{{0x05BE, 0x05BE},
                                                 {0x05D0, 0x05F4},
                                                 {0x0608, 0x0608},
                                                 {0x060D, 0x060D},
                                                 {0x061B, 0x064A},
                                                 {0x066D, 0x066F},
                                                 {0x0671, 0x06D5},
                                                 {0x06E5, 0x06EF},
                                                 {0x06FA, 0x08C9},
                                                 {0x200F, 0x200F},
                                                 {0xFB1D, 0xFDFC},
                                                 {0xFE70, 0xFEFC},
                                                 {0x10800, 0x10FFF},
                                                 {0x1E800, 0x1EFFF}}};

// What goes with what is around it. Looked at after the letters, which lie between some of these.
constexpr std::array<Range, 14> kWithoutDirection = {{{0x0000, 0x0040},
                                                      {0x005B, 0x0060},
                                                      {0x007B, 0x00A9},
                                                      {0x00AB, 0x00B4},
                                                      {0x00B6, 0x00B9},
                                                      {0x00BB, 0x00BF},
                                                      {0x0300, 0x036F},
                                                      {0x0590, 0x08FF},
                                                      {0x2000, 0x200D},
                                                      {0x2010, 0x2070},
                                                      {0x2074, 0x2BFF},
                                                      {0x3000, 0x3004},
                                                      {0xFE00, 0xFE6F},
                                                      {0x1F000, 0x1FAFF}}};

}  // namespace

TextDirection directionOf(std::string_view text) noexcept {
    while (!text.empty()) {
        const char32_t character = foundation::takeCharacter(text);
        if (isIn(kRightToLeft, character)) return TextDirection::rightToLeft;
        if (!isIn(kWithoutDirection, character)) return TextDirection::leftToRight;
    }
    return TextDirection::none;
}

}  // namespace tavrolin::ui
