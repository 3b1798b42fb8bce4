#include "adapters/language/letters.h"

#include <algorithm>
#include <utility>

#include "tavrolin/foundation/utf8.h"

namespace tavrolin::adapters::language {

namespace {

constexpr std::u32string_view kYiddish = U"\u05F0\u05F1\u05F2\uFB1F";
constexpr std::u32string_view kKashmiri = U"\u0620\u0672\u0673\u06C4";
constexpr std::u32string_view kKurdish = U"\u0695\u06B5\u06C6\u06CE\u06D5";
constexpr std::u32string_view kPashto =
    U"\u067C\u0681\u0685\u0689\u0693\u0696\u069A\u06AB\u06BC\u06CD\u06D0";
constexpr std::u32string_view kUrdu = U"\u0679\u0688\u0691\u06BA\u06BE\u06C1\u06C2\u06D2\u06D3";
constexpr std::u32string_view kPersian = U"\u067E\u0686\u0698\u06A9\u06AF\u06CC";

bool isIn(std::u32string_view letters, char32_t letter) {
    return letters.find(letter) != std::u32string_view::npos;
}

constexpr bool isBetween(char32_t first, char32_t letter, char32_t last) {
    return letter >= first && letter <= last;
}

// Signs, digits and blanks say nothing; nor does what is drawn upon a letter.
bool saysNothing(char32_t c) {
    if (c < 0x80) return !isBetween('a', c | 0x20U, 'z');
    return isBetween(0x80, c, 0xBF) || isBetween(0x300, c, 0x36F) || isBetween(0x591, c, 0x5C7) ||
           isBetween(0x600, c, 0x61F) || isBetween(0x64B, c, 0x66D) || isBetween(0x6D6, c, 0x6ED) ||
           isBetween(0x6F0, c, 0x6F9) || isBetween(0x7A6, c, 0x7B0) ||
           isBetween(0x2000, c, 0x2BFF) || isBetween(0xFE00, c, 0xFE0F) ||
           isBetween(0xFFF0, c, 0xFFFF) || isBetween(0x1F000, c, 0x1FAFF);
}

}  // namespace

Letters::Letters(std::string_view text) {
    while (!text.empty())
        count(foundation::takeCharacter(text));
}

void Letters::count(char32_t letter) {
    const bool isKurdishVowel = letter == 0x6D5;  // among signs, but a letter
    if (saysNothing(letter) && !isKurdishVowel) return;
    if (isBetween(0x5D0, letter, 0x5F4) || isBetween(0xFB1D, letter, 0xFB4F)) {
        ++hebrew_;
        yiddish_ += isIn(kYiddish, letter) ? 1 : 0;
    } else if (isBetween(0x780, letter, 0x7BF)) {
        ++thaana_;
    } else if (isBetween(0x620, letter, 0x77F) || isBetween(0x8A0, letter, 0x8FF) ||
               isBetween(0xFB50, letter, 0xFDFF) || isBetween(0xFE70, letter, 0xFEFC)) {
        ++arabic_;
        kashmiri_ += isIn(kKashmiri, letter) ? 1 : 0;
        kurdish_ += isIn(kKurdish, letter) ? 1 : 0;
        pashto_ += isIn(kPashto, letter) ? 1 : 0;
        urdu_ += isIn(kUrdu, letter) ? 1 : 0;
        persian_ += isIn(kPersian, letter) ? 1 : 0;
    } else {
        ++others_;
    }
}

bool Letters::areKashmiri() const {
    constexpr std::size_t kOneIn = 100;
    return arabic_ > std::max(others_, hebrew_) && kashmiri_ > 0 && kashmiri_ * kOneIn >= arabic_;
}

std::optional<std::string_view> Letters::language() const {
    const std::size_t most = std::max({hebrew_, thaana_, arabic_});
    if (most == 0 || most < others_) return std::nullopt;
    if (most == hebrew_) return yiddish_ > 0 ? "yi" : "he";
    if (most == thaana_) return "dv";
    if (areKashmiri()) return "ks";
    const std::pair<std::size_t, std::string_view> east[] = {
        {kurdish_, "ku"}, {pashto_, "ps"}, {urdu_, "ur"}};
    const auto& strongest =
        *std::max_element(std::begin(east), std::end(east),
                          [](const auto& a, const auto& b) { return a.first < b.first; });
    if (strongest.first > 0) return strongest.second;
    return persian_ > 0 ? "fa" : "ar";
}

}  // namespace tavrolin::adapters::language
