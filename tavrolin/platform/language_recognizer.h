#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrolin::platform {

/// Tells what language a text is in. Threads: any.
class LanguageRecognizer {
public:
    virtual ~LanguageRecognizer() = default;

    /// The code of the language that most of the text is in, ISO 639-1, in today's spelling ("he",
    /// "yi"); nothing when it can't be told.
    virtual std::optional<std::string> dominantLanguage(std::string_view text) = 0;
};

}  // namespace tavrolin::platform
