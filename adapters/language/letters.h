#pragma once

#include <optional>
#include <string_view>

namespace tavrolin::adapters::language {

/// What the letters of a text alone tell. The text is UTF-8.
struct Letters {
    explicit Letters(std::string_view text);

    /// The language that is written from right to left in the script of most letters; nothing
    /// where most of them are of another script.
    std::optional<std::string_view> language() const;
    /// Letters that no other language in Arabic script has, often enough not to be a name's.
    bool areKashmiri() const;

private:
    void count(char32_t letter);

    std::size_t hebrew_ = 0;
    std::size_t thaana_ = 0;
    std::size_t arabic_ = 0;
    std::size_t others_ = 0;
    // Of these, the ones that only some languages have.
    std::size_t yiddish_ = 0;
    std::size_t kashmiri_ = 0;
    std::size_t kurdish_ = 0;
    std::size_t pashto_ = 0;
    std::size_t urdu_ = 0;
    std::size_t persian_ = 0;  // the languages to the east of it have them, too
};

}  // namespace tavrolin::adapters::language
