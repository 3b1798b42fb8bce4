#include "adapters/memory/memory_typesetter.h"

#include <algorithm>
#include <cmath>

#include "tavrolin/foundation/utf8.h"

namespace tavrolin::adapters::memory {

namespace {

using Line = MemoryTextLayout::Line;

constexpr double kAdvance = 0.5;
constexpr double kLineHeight = 1.2;
constexpr std::size_t kMostCharacters = 50'000;  // what is longer than any screen

double sizeOf(const platform::StyledText& text) {
    double size = 0;
    for (const platform::TextRun& run : text.runs)
        size = std::max(size, run.attributes.font.size);
    return text.runs.empty() ? platform::Font().size : size;
}

std::vector<std::string_view> charactersOf(std::string_view text) {
    std::vector<std::string_view> characters;
    std::size_t begin = 0;
    while (begin < text.size() && characters.size() < kMostCharacters) {
        std::size_t end = begin + 1;
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80)
            ++end;
        characters.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return characters;
}

// The characters of each line, of at most so many.
std::vector<std::vector<std::string_view>> broken(std::string_view text, std::size_t most) {
    std::vector<std::vector<std::string_view>> lines(1);
    std::size_t afterBlank = 0;  // in the last line, where it may break
    for (const std::string_view character : charactersOf(text)) {
        if (character == "\n") {
            lines.emplace_back();
            afterBlank = 0;
            continue;
        }
        if (static_cast<unsigned char>(character.front()) < 0x20) continue;
        if (lines.back().size() >= most && character != " ") {
            auto& full = lines.back();
            const std::size_t at = afterBlank > 0 ? afterBlank : full.size();
            std::vector<std::string_view> rest(full.begin() + static_cast<std::ptrdiff_t>(at),
                                               full.end());
            full.resize(at);
            lines.push_back(std::move(rest));
            afterBlank = 0;
        }
        lines.back().push_back(character);
        if (character == " ") afterBlank = lines.back().size();
    }
    for (auto& line : lines) {
        while (!line.empty() && line.back() == " " && &line != &lines.back())
            line.pop_back();
    }
    return lines;
}

}  // namespace

MemoryTextLayout::MemoryTextLayout(std::vector<Line> lines, double lineHeight, bool isTruncated)
    : lines_(std::move(lines)), lineHeight_(lineHeight), isTruncated_(isTruncated) {
    for (const Line& line : lines_)
        size_.width = std::max(size_.width, line.width);
    size_.height = static_cast<double>(std::max<std::size_t>(1, lines_.size())) * lineHeight;
}

platform::Rect MemoryTextLayout::inkBounds() const {
    platform::Rect ink;
    for (const Line& line : lines_)
        ink = ink.united({line.x, 0, line.width, size_.height});
    return ink;
}

std::unique_ptr<platform::TextLayout> MemoryTypesetter::layout(const platform::StyledText& text,
                                                               const platform::TextFrame& frame) {
    const double size = sizeOf(text);
    const double advance = std::max(size * kAdvance, 1e-3);
    const double width = std::max(0.0, frame.width);
    const auto most = static_cast<std::size_t>(std::clamp(width / advance + 1e-9, 1.0, 1e9));
    const std::string repaired = foundation::repairedUtf8(text.string);
    auto lines = broken(repaired, most);
    const auto limit = static_cast<std::size_t>(std::max(0, frame.lineLimit));
    const bool isTruncated = limit > 0 && lines.size() > limit;
    if (isTruncated) {
        lines.resize(limit);
        if (frame.lineBreakMode >= platform::LineBreakMode::truncatingHead) {
            if (lines.back().size() >= most) lines.back().resize(most - 1);
            lines.back().push_back("…");
        }
    }
    std::vector<Line> set;
    for (const auto& line : lines) {
        Line& made = set.emplace_back();
        for (const std::string_view character : line)
            made.text += character;
        made.width = static_cast<double>(line.size()) * advance;
        const double rest = width < platform::kUnlimitedWidth ? width - made.width : 0;
        made.x = frame.alignment == platform::TextAlignment::center  ? rest / 2
                 : frame.alignment == platform::TextAlignment::right ? rest
                                                                     : 0;
    }
    if (repaired.empty()) set.front().width = 0;
    return std::make_unique<MemoryTextLayout>(std::move(set), size * kLineHeight, isTruncated);
}

double MemoryTypesetter::lineHeight(const platform::Font& font) {
    return font.size * kLineHeight;
}

std::vector<std::pair<char32_t, char32_t>> MemoryTypesetter::charactersOfFont(
    std::string_view name) {
    if (name == "AppleColorEmoji")
        return {{'#', '#'}, {'*', '*'}, {'0', '9'}, {0x2600, 0x27BF}, {0x1F300, 0x1FAFF}};
    return {{0x20, 0xD7FF}, {0xF900, 0x10FFFD}};
}

}  // namespace tavrolin::adapters::memory
