#include "adapters/pango/prepared_text.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "tavrolin/foundation/utf8.h"

namespace tavrolin::adapters::pango {

using platform::LineBreakMode;
using platform::StyledText;
using platform::TextRun;

namespace {

struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
};

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
}

std::size_t offsetAfter(std::string_view text, std::size_t characters) {
    std::size_t offset = 0;
    while (offset < text.size()) {
        if (beginsCharacter(text[offset]) && characters-- == 0) break;
        ++offset;
    }
    return offset;
}

std::size_t offsetOfLast(std::string_view text, std::size_t characters) {
    std::size_t offset = text.size();
    while (offset > 0 && characters > 0) {
        if (beginsCharacter(text[--offset])) --characters;
    }
    return offset;
}

// What is set of the text. Stray continuation bytes count as nothing, so the bytes have a bound
// too.
std::vector<Range> keptRanges(std::string_view text, const TextLimits& limits) {
    const std::size_t half = limits.characters / 2;
    const auto bounded = [&](std::size_t count) { return count * 4; };
    if (text.size() <= limits.characters) return {{0, text.size()}};
    switch (limits.mode) {
        case LineBreakMode::truncatingHead: {
            const std::size_t begin = offsetOfLast(text, limits.characters);
            const std::size_t most = bounded(limits.characters);
            return {{std::max(begin, text.size() - std::min(text.size(), most)), text.size()}};
        }
        case LineBreakMode::truncatingMiddle: {
            const std::size_t end = std::min(offsetAfter(text, half), bounded(half));
            const std::size_t begin = std::max(offsetOfLast(text, half),
                                               text.size() - std::min(text.size(), bounded(half)));
            if (begin <= end) return {{0, text.size()}};
            return {{0, end}, {begin, text.size()}};
        }
        default:
            return {
                {0, std::min(offsetAfter(text, limits.characters), bounded(limits.characters))}};
    }
}

class Preparation {
public:
    explicit Preparation(const TextLimits& limits)
        : linesLeft_(limits.lines), mostInLine_(limits.charactersInLine) {}

    void append(std::string_view text, const platform::TextAttributes& attributes) {
        const std::size_t before = result_.string.size();
        if (foundation::isValidUtf8(text)) {
            appendVisible(text);
        } else {
            appendVisible(foundation::repairedUtf8(text));
        }
        const std::size_t length = result_.string.size() - before;
        if (length == 0) return;
        if (!result_.runs.empty() && result_.runs.back().attributes == attributes) {
            result_.runs.back().length += length;
        } else {
            result_.runs.push_back({length, attributes});
        }
    }
    PreparedText& result() { return result_; }

private:
    void appendVisible(std::string_view text) {
        for (std::size_t i = 0; i < text.size() && linesLeft_ > 0; ++i) {
            const char byte = text[i];
            const auto bits = static_cast<unsigned char>(byte);
            const bool followsReturn = std::exchange(followsReturn_, byte == '\r');
            if (byte == '\n' || byte == '\r') {
                if (byte == '\r' || !followsReturn) endLine();
            } else if (bits == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
                ++i;  // a control character of the upper half
            } else if (text.substr(i, 3) == "\u2028" || text.substr(i, 3) == "\u2029") {
                endLine();
                i += 2;
            } else if (byte == '\t' || (bits >= 0x20 && bits != 0x7F)) {
                add(byte);
            }
        }
    }
    void add(char byte) {
        if (beginsCharacter(byte)) ++inLine_;
        if (inLine_ > mostInLine_) {
            result_.isShortened = true;
        } else {
            result_.string += byte;
        }
    }
    void endLine() {
        inLine_ = 0;
        if (--linesLeft_ > 0) {
            result_.string += '\n';
        } else {
            result_.isShortened = true;
        }
    }

    PreparedText result_;
    std::size_t linesLeft_;
    std::size_t mostInLine_;
    std::size_t inLine_ = 0;
    bool followsReturn_ = false;
};

}  // namespace

PreparedText prepared(const StyledText& text, const TextLimits& limits) {
    const std::vector<Range> kept = keptRanges(text.string, limits);
    Preparation preparation(limits);
    const auto appendKept = [&](Range run, const platform::TextAttributes& attributes) {
        for (const Range& range : kept) {
            const std::size_t begin = std::max(run.begin, range.begin);
            const std::size_t end = std::min(run.end, range.end);
            if (begin < end)
                preparation.append(std::string_view(text.string).substr(begin, end - begin),
                                   attributes);
        }
    };
    std::size_t offset = 0;
    for (const TextRun& run : text.runs) {
        const std::size_t end = offset + std::min(run.length, text.string.size() - offset);
        appendKept({offset, end}, run.attributes);
        offset = end;
    }
    appendKept({offset, text.string.size()}, {});  // runs that don't reach the end
    PreparedText& result = preparation.result();
    std::size_t length = 0;
    for (const Range& range : kept)
        length += range.end - range.begin;
    result.isShortened = result.isShortened || length < text.string.size();
    return std::move(result);
}

PreparedText PreparedText::substring(std::size_t begin, std::size_t end) const {
    PreparedText part;
    part.string = string.substr(begin, end - begin);
    std::size_t offset = 0;
    for (const TextRun& run : runs) {
        const std::size_t from = std::max(begin, offset);
        const std::size_t to = std::min(end, offset + run.length);
        if (from < to) part.runs.push_back({to - from, run.attributes});
        offset += run.length;
    }
    return part;
}

void PreparedText::append(std::string_view text) {
    string += text;
    if (runs.empty()) runs.push_back({});
    runs.back().length += text.size();
}

}  // namespace tavrolin::adapters::pango
