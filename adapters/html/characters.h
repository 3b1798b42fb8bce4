#pragma once

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// HTML's and CSS's ideas of letters, blanks and numbers: ASCII only, no locale.
namespace tavrolin::adapters::html {

constexpr bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string lowercased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

constexpr std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Takes the next word off the front of the text; empty at its end.
constexpr std::string_view takeWord(std::string_view& text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    std::size_t length = 0;
    while (length < text.size() && !isBlank(text[length]))
        ++length;
    const std::string_view word = text.substr(0, length);
    text.remove_prefix(length);
    return word;
}

/// The number at the front of the text, and what follows it.
inline std::optional<std::pair<double, std::string_view>> leadingNumber(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number != number) return std::nullopt;
    const char first = text.front();
    if (isLetter(first) || (first == '-' && text.size() > 1 && isLetter(text[1])))
        return std::nullopt;  // "inf"
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return std::pair(number, text);
}

}  // namespace tavrolin::adapters::html
