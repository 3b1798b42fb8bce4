#include "tavrolin/foundation/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace tavrolin::foundation {

namespace {

const std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

template <class Word>
Word wordAt(const std::uint8_t* at) noexcept {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// Payloads are mostly ASCII: eight bytes are looked at in one go, and short rests in one as well.
const std::uint8_t* skipAscii(const std::uint8_t* at, const std::uint8_t* end) noexcept {
    while (end - at >= 8) {
        if ((wordAt<std::uint64_t>(at) & 0x8080808080808080U) != 0) break;
        at += 8;
    }
    if (const auto left = end - at; left >= 4 && left < 8) {
        const std::uint32_t both = wordAt<std::uint32_t>(at) | wordAt<std::uint32_t>(end - 4);
        if ((both & 0x80808080U) == 0) return end;
    }
    while (at != end && *at < 0x80)
        ++at;
    return at;
}

struct Sequence {
    std::size_t length;  // of the character, or of the invalid bytes that one U+FFFD replaces
    bool valid;
};

// The sequence that begins with a byte above ASCII.
Sequence sequenceAt(const std::uint8_t* at, const std::uint8_t* end) noexcept {
    const std::uint8_t lead = *at;
    std::size_t length = 0;
    std::uint8_t low = 0x80;
    std::uint8_t high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;   // shorter would do
        if (lead == 0xED) high = 0x9F;  // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;  // above U+10FFFF
    } else {
        return {1, false};
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (at + i == end || at[i] < low || at[i] > high) return {i, false};
        low = 0x80;
        high = 0xBF;
    }
    return {length, true};
}

// Capitals of one block: each is `distance` before its small letter. In an alternating block
// capitals and small letters take turns, beginning with a capital.
struct Capitals {
    char32_t first;
    char32_t last;
    std::int32_t distance;
    bool alternate = false;
};

constexpr std::array<Capitals, 28> kCapitals = {{
    {0x41, 0x5A, 32},          {0xC0, 0xD6, 32},          {0xD8, 0xDE, 32},
    {0x100, 0x12E, 1, true},   {0x130, 0x130, -199},  // the dotted one
    {0x132, 0x136, 1, true},   {0x139, 0x147, 1, true},   {0x14A, 0x176, 1, true},
    {0x178, 0x178, -121},      {0x179, 0x17D, 1, true},   {0x386, 0x386, 38},
    {0x388, 0x38A, 37},        {0x38C, 0x38C, 64},        {0x38E, 0x38F, 63},
    {0x391, 0x3A1, 32},        {0x3A3, 0x3AB, 32},        {0x400, 0x40F, 80},
    {0x410, 0x42F, 32},        {0x460, 0x480, 1, true},   {0x48A, 0x4BE, 1, true},
    {0x4C0, 0x4C0, 15},        {0x4C1, 0x4CD, 1, true},   {0x4D0, 0x52E, 1, true},
    {0x531, 0x556, 48},        {0x1E00, 0x1E94, 1, true}, {0x1E9E, 0x1E9E, -7615},
    {0x1EA0, 0x1EFE, 1, true}, {0xFF21, 0xFF3A, 32},
}};

char32_t lowercaseOf(char32_t letter) noexcept {
    const auto* const block = std::find_if(
        kCapitals.begin(), kCapitals.end(),
        [&](const Capitals& each) { return letter >= each.first && letter <= each.last; });
    if (block == kCapitals.end() || (block->alternate && (letter - block->first) % 2 != 0)) {
        return letter;
    }
    return static_cast<char32_t>(static_cast<std::int32_t>(letter) + block->distance);
}

// Of two or three bytes, which all letters with a case have here.
char32_t characterAt(const std::uint8_t* at, std::size_t length) noexcept {
    if (length == 2) return (at[0] & 0x1FU) << 6U | (at[1] & 0x3FU);
    return (at[0] & 0x0FU) << 12U | (at[1] & 0x3FU) << 6U | (at[2] & 0x3FU);
}

void append(std::string& text, char32_t character) {
    const auto byte = [&](char32_t bits) { text += static_cast<char>(bits); };
    if (character < 0x80) return byte(character);
    if (character < 0x800) {
        byte(0xC0U | character >> 6U);
    } else {
        byte(0xE0U | character >> 12U);
        byte(0x80U | (character >> 6U & 0x3FU));
    }
    byte(0x80U | (character & 0x3FU));
}

// Blanks and line breaks. None of them is the end of another character's bytes.
constexpr std::array<std::string_view, 26> kWhiteSpace = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00a0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200a", "\u200b", "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"};

// The length of the white space that the predicate finds at its end of the text; 0 for none.
template <class IsThere>
std::size_t whiteSpace(IsThere isThere) noexcept {
    const auto* const found = std::find_if(kWhiteSpace.begin(), kWhiteSpace.end(), isThere);
    return found == kWhiteSpace.end() ? 0 : found->size();
}

}  // namespace

bool isValidUtf8(std::string_view text) noexcept {
    const std::uint8_t* at = bytesOf(text);
    const std::uint8_t* const end = at + text.size();
    while ((at = skipAscii(at, end)) != end) {
        const Sequence sequence = sequenceAt(at, end);
        if (!sequence.valid) return false;
        at += sequence.length;
    }
    return true;
}

char32_t takeCharacter(std::string_view& text) noexcept {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t character = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length && i < text.size(); ++i)
        character = character << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
    text.remove_prefix(length < text.size() ? length : text.size());
    return character;
}

std::string repairedUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size() + 16);
    const std::uint8_t* at = bytesOf(text);
    const std::uint8_t* const end = at + text.size();
    while (at != end) {
        const std::uint8_t* const ascii = at;
        at = skipAscii(at, end);
        result.append(reinterpret_cast<const char*>(ascii), static_cast<std::size_t>(at - ascii));
        if (at == end) break;
        const Sequence sequence = sequenceAt(at, end);
        if (sequence.valid) {
            result.append(reinterpret_cast<const char*>(at), sequence.length);
        } else {
            result += "\xEF\xBF\xBD";
        }
        at += sequence.length;
    }
    return result;
}

std::string lowercase(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    const std::uint8_t* at = bytesOf(text);
    const std::uint8_t* const end = at + text.size();
    while (at != end) {
        const Sequence sequence = *at < 0x80 ? Sequence{1, true} : sequenceAt(at, end);
        if (*at < 0x80) {
            append(result, lowercaseOf(*at));
        } else if (sequence.valid && sequence.length < 4) {
            append(result, lowercaseOf(characterAt(at, sequence.length)));
        } else {
            result.append(reinterpret_cast<const char*>(at), sequence.length);
        }
        at += sequence.length;
    }
    return result;
}

std::string_view trimmed(std::string_view text) noexcept {
    const auto first = [&](std::string_view space) { return text.starts_with(space); };
    const auto last = [&](std::string_view space) { return text.ends_with(space); };
    while (const std::size_t length = whiteSpace(first))
        text.remove_prefix(length);
    while (const std::size_t length = whiteSpace(last))
        text.remove_suffix(length);
    return text;
}

}  // namespace tavrolin::foundation
