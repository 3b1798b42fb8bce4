#pragma once

#include <map>

#include "tavrolin/platform/language_recognizer.h"

namespace tavrolin::adapters::memory {

/// Knows the languages that a test has told it; beyond these, a text with Hebrew letters is Hebrew
/// and one with Arabic letters Arabic. Main thread.
class MemoryLanguageRecognizer final : public platform::LanguageRecognizer {
public:
    void setLanguage(const std::string& text, std::optional<std::string> code) {
        languages_[text] = std::move(code);
    }

    std::optional<std::string> dominantLanguage(std::string_view text) override;

private:
    std::map<std::string, std::optional<std::string>, std::less<>> languages_;
};

}  // namespace tavrolin::adapters::memory
