#include "adapters/language/language_recognizer.h"

#include <algorithm>
#include <cstdio>  // the next one needs it
#include <utility>

// A line of its own, so that it stays behind.
#include <cld2/public/compact_lang_det.h>
#include <cld2/public/encodings.h>

#include "adapters/language/letters.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::adapters::language {

namespace {

constexpr std::size_t kCounted = 4096;

// Its beginning, without control characters, which would end the text for the detector.
std::string beginningOf(std::string_view text) {
    std::string beginning(text.substr(0, kCounted));
    std::replace_if(
        beginning.begin(), beginning.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
    // A character that was cut becomes a sign, which says nothing.
    return foundation::isValidUtf8(beginning) ? beginning : foundation::repairedUtf8(beginning);
}

std::optional<std::string> codeOf(CLD2::Language language) {
    std::string_view code = CLD2::LanguageCode(language);
    if (code == "un" || code.starts_with("xx")) return std::nullopt;
    code = code.substr(0, code.find('-'));  // "zh-Hant"
    constexpr std::pair<std::string_view, std::string_view> kToday[] = {
        {"iw", "he"}, {"ji", "yi"}, {"in", "id"}, {"jw", "jv"}, {"mo", "ro"}};
    for (const auto& [old, today] : kToday) {
        if (code == old) code = today;
    }
    if (code.size() != 2) return std::nullopt;
    return std::string(code);
}

std::optional<std::string> detected(const std::string& text) {
    const CLD2::CLDHints hints = {nullptr, nullptr, CLD2::UNKNOWN_ENCODING, CLD2::UNKNOWN_LANGUAGE};
    CLD2::Language languages[3];
    int percents[3];
    double scores[3];
    int textBytes = 0;
    bool isReliable = false;
    int validBytes = 0;
    const CLD2::Language language = CLD2::ExtDetectLanguageSummaryCheckUTF8(
        text.data(), static_cast<int>(text.size()), true, &hints, 0, languages, percents, scores,
        nullptr, &textBytes, &isReliable, &validBytes);
    return isReliable ? codeOf(language) : std::nullopt;
}

}  // namespace

std::optional<std::string> LanguageRecognizer::dominantLanguage(std::string_view text) {
    const std::string beginning = beginningOf(text);
    const Letters letters(beginning);
    if (letters.areKashmiri()) return "ks";  // the detector takes it for Urdu or Arabic
    if (auto language = detected(beginning)) return language;
    const auto language = letters.language();
    return language ? std::optional<std::string>(*language) : std::nullopt;
}

}  // namespace tavrolin::adapters::language
