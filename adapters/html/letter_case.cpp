#include "adapters/html/letter_case.h"

#include <clocale>
#include <cwctype>

#include "adapters/html/characters.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::adapters::html {

namespace {

// Unicode's letters, whatever the process's own language is; ASCII's where the system has none.
locale_t unicodeLocale() {
    static const locale_t locale = [] {
        const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return unicode != nullptr ? unicode : ::newlocale(LC_CTYPE_MASK, "C", nullptr);
    }();
    return locale;
}

void append(std::string& text, wint_t character) {
    const auto tail = [&](unsigned shift) {
        text += static_cast<char>(0x80U | (character >> shift & 0x3FU));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0U | character >> 6U);
        tail(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0U | character >> 12U);
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0U | character >> 18U);
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

std::string transformed(std::string_view text, TextTransform transform) {
    std::string result;
    result.reserve(text.size());
    bool beginsWord = true;
    while (!text.empty()) {
        const auto character = static_cast<wint_t>(foundation::takeCharacter(text));
        const bool isUpper = transform == TextTransform::uppercase ||
                             (transform == TextTransform::capitalize && beginsWord);
        if (isUpper) {
            append(result, ::towupper_l(character, unicodeLocale()));
        } else if (transform == TextTransform::lowercase) {
            append(result, ::towlower_l(character, unicodeLocale()));
        } else {
            append(result, character);
        }
        beginsWord =
            character == 0xA0 || (character < 0x80 && isBlank(static_cast<char>(character)));
    }
    return result;
}

}  // namespace tavrolin::adapters::html
