#pragma once

#include "tavrolin/platform/language_recognizer.h"

namespace tavrolin::adapters::language {

/// Languages by CLD2 with its full tables, and by the letters of the script where a text is too
/// short for it: a word in Hebrew letters is Hebrew (Yiddish with letters that only that has), one
/// in Thaana is Divehi, one in Arabic letters is Arabic, or Persian, Urdu, Pashto, Kurdish or
/// Kashmiri by the letters that these have added. A single word in Latin letters may be anything,
/// and stays unknown.
///
/// A language of three letters (which has none of two) is unknown. Only the first 4 KB count.
class LanguageRecognizer final : public platform::LanguageRecognizer {
public:
    std::optional<std::string> dominantLanguage(std::string_view text) override;
};

}  // namespace tavrolin::adapters::language
