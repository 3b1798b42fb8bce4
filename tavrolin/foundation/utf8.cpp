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
