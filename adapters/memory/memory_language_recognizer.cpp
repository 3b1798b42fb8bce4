#include "adapters/memory/memory_language_recognizer.h"

namespace tavrolin::adapters::memory {

std::optional<std::string> MemoryLanguageRecognizer::dominantLanguage(std::string_view text) {
    if (const auto found = languages_.find(text); found != languages_.end()) return found->second;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte == 0xD6 || byte == 0xD7) return "he";  // U+0580 to U+05FF, but for some Armenian
        if (byte >= 0xD8 && byte <= 0xDB) return "ar";  // U+0600 to U+06FF
    }
    return std::nullopt;
}

}  // namespace tavrolin::adapters::memory
