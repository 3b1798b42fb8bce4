#pragma once

#include <utility>
#include <vector>

#include "tavrolin/platform/styled_text.h"

namespace tavrolin {

/// A set of characters: ranges of code points (first and last, both included) in any order.
class CharacterSet {
public:
    using Range = std::pair<char32_t, char32_t>;

    CharacterSet() = default;
    explicit CharacterSet(std::vector<Range> ranges) : ranges_(std::move(ranges)) {}
    void addRange(char32_t first, char32_t count);
    void remove(char32_t character);
    bool contains(char32_t character) const;

private:
    std::vector<Range> ranges_;
};

/// Main thread.
class CVNEmojiUtility {
public:
    /// What the system's emoji font has, without " 0123456789#*". Made once.
    static const CharacterSet& emojiCharacterSet();
    /// U+20D0 to U+4EBE and U+FE00 to U+3F2FE: wider than emoji, deliberately.
    static CharacterSet customEmojiCharacterSet();
    /// Whether there is nothing in the text but characters of the custom set, blanks, tabs and line
    /// ends; so the empty text has it.
    static bool containsEmoji(const platform::StyledText& text);
};

}  // namespace tavrolin
