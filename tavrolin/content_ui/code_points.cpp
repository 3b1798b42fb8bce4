#include "tavrolin/content_ui/code_points.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

#include "tavrolin/foundation/utf8.h"

namespace tavrolin {

namespace {

using Range = std::pair<char32_t, char32_t>;

template <std::size_t N>
bool isIn(const std::array<Range, N>& ranges, char32_t character) {
    return std::any_of(ranges.begin(), ranges.end(), [character](const Range& range) {
        return character >= range.first && character <= range.second;
    });
}

// Letters of the scripts that are written from right to left.
constexpr std::array<Range, 12> kRightToLeft{{{0x05BE, 0x05BE},
                                              {0x05D0, 0x05F4},
                                              {0x0608, 0x0608},
                                              {0x060D, 0x060D},
                                              {0x061B, 0x064A},
                                              {0x066D, 0x066F},
                                              {0x0671, 0x06D5},
                                              {0x06E5, 0x06EF},
                                              {0x06FA, 0x08C9},
                                              {0xFB1D, 0xFDFC},
                                              {0xFE70, 0xFEFC},
                                              {0x10800, 0x10FFF}}};
constexpr std::array<Range, 2> kRightToLeftToo{{{0x1E800, 0x1EFFF}, {0x200F, 0x200F}}};

// Punctuation, digits, symbols and marks, which go with what is around them.
constexpr std::array<Range, 15> kWithoutDirection{{{0x0000, 0x0040},
                                                   {0x005B, 0x0060},
                                                   {0x007B, 0x00A9},
                                                   {0x00AB, 0x00B4},
                                                   {0x00B6, 0x00B9},
                                                   {0x00BB, 0x00BF},
                                                   {0x0300, 0x036F},
                                                   {0x0590, 0x0600},
                                                   {0x0600, 0x08FF},
                                                   {0x2000, 0x200D},
                                                   {0x2010, 0x2070},
                                                   {0x2074, 0x2BFF},
                                                   {0x3000, 0x3004},
                                                   {0xFE00, 0xFE6F},
                                                   {0x1F000, 0x1FAFF}}};

}  // namespace

std::u32string codePoints(std::string_view text) {
    std::string repaired;
    if (!foundation::isValidUtf8(text)) text = repaired = foundation::repairedUtf8(text);
    std::u32string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const int length = lead < 0x80 ? 1 : std::countl_one(lead);
        char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
        for (int k = 1; k < length; ++k)
            character = character << 6U |
                        (static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]) & 0x3FU);
        result.push_back(character);
        i += static_cast<std::size_t>(length);
    }
    return result;
}

bool startsRightToLeft(std::string_view text) {
    for (const char32_t character : codePoints(text)) {
        if (isIn(kRightToLeft, character) || isIn(kRightToLeftToo, character)) return true;
        if (!isIn(kWithoutDirection, character)) return false;
    }
    return false;
}

}  // namespace tavrolin
