#include "tavrolin/foundation/base64.h"

#include <array>

namespace tavrolin::foundation {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> makeDigits() {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(kNoDigit);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
        digits[static_cast<std::uint8_t>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return digits;
}

constexpr std::array<std::uint8_t, 256> kDigits = makeDigits();

}  // namespace

std::string base64Encoded(std::span<const std::uint8_t> bytes) {
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
        std::uint32_t group = static_cast<std::uint32_t>(bytes[i]) << 16U;
        if (count > 1) group |= static_cast<std::uint32_t>(bytes[i + 1]) << 8U;
        if (count > 2) group |= bytes[i + 2];
        result += kAlphabet[group >> 18U];
        result += kAlphabet[(group >> 12U) & 63U];
        result += count > 1 ? kAlphabet[(group >> 6U) & 63U] : '=';
        result += count > 2 ? kAlphabet[group & 63U] : '=';
    }
    return result;
}

std::optional<std::vector<std::uint8_t>> base64Decoded(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    std::vector<std::uint8_t> result;
    result.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    unsigned count = 0;  // of the bits that no byte has taken yet
    for (const char c : text.substr(0, text.size() - padding)) {
        const std::uint8_t digit = kDigits[static_cast<std::uint8_t>(c)];
        if (digit == kNoDigit) return std::nullopt;
        bits = (bits << 6U) | digit;
        count += 6;
        if (count >= 8) {
            count -= 8;
            result.push_back(static_cast<std::uint8_t>(bits >> count));
            bits &= (1U << count) - 1;
        }
    }
    if (bits != 0) return std::nullopt;
    return result;
}

}  // namespace tavrolin::foundation
