#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/pango/handles.h"

namespace tavrolin::adapters::pango {

/// The fonts that text is set in: Inter (fonts-inter), Noto Sans for the scripts that Inter doesn't
/// have (fonts-noto-core; fonts-noto-cjk for Chinese, Japanese and Korean), Noto Color Emoji
/// (fonts-noto-color-emoji), DejaVu Sans Mono (fonts-dejavu-core) for what is monospaced. Which
/// fonts there are doesn't depend on the user's configuration, language or other installed fonts.
/// Only where there is no Inter at all, the system's configuration decides.
///
/// Most texts need Inter and emoji only, and of every font that is known each choice of a font
/// looks at all; so the others join in only for a text that has a character from elsewhere. Which
/// of the two it is depends on the text alone.
///
/// The current configuration of fontconfig, which is the process's, is set to this one.
class Fonts {
public:
    /// Raises when the system has no fonts.
    Fonts();
    ~Fonts();
    Fonts(const Fonts&) = delete;
    Fonts& operator=(const Fonts&) = delete;

    /// The context in which this text (valid UTF-8) is set. Lives as long as this.
    PangoContext* contextFor(std::string_view text);
    /// As ranges of code points, ascending; empty when there is no such font.
    std::vector<std::pair<char32_t, char32_t>> charactersOf(std::string_view family);

    static constexpr const char* kFamily = "Inter";
    static constexpr const char* kMonospacedFamily = "DejaVu Sans Mono";
    static constexpr const char* kEmojiFamily = "Noto Color Emoji";

private:
    class Set;
    Set& all();

    std::unique_ptr<Set> common_;
    std::unique_ptr<Set> all_;
};

}  // namespace tavrolin::adapters::pango
