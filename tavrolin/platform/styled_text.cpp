#include "tavrolin/platform/styled_text.h"

namespace tavrolin::platform {

StyledText StyledText::plain(std::string_view text, const TextAttributes& attributes) {
    StyledText result;
    result.append(text, attributes);
    return result;
}

void StyledText::append(std::string_view text, const TextAttributes& attributes) {
    if (text.empty()) return;
    string += text;
    if (!runs.empty() && runs.back().attributes == attributes) {
        runs.back().length += text.size();
    } else {
        runs.push_back({text.size(), attributes});
    }
}

void StyledText::setColor(const Color& color) {
    for (TextRun& run : runs)
        run.attributes.color = color;
}

std::optional<Color> StyledText::firstColor() const {
    return runs.empty() ? std::nullopt : runs.front().attributes.color;
}

}  // namespace tavrolin::platform
