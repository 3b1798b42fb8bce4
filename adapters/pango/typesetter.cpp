#include "adapters/pango/typesetter.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "adapters/pango/fonts.h"
#include "adapters/pango/shared_text.h"

namespace tavrolin::adapters::pango {

using platform::StyledText;
using platform::TextFrame;

namespace {

constexpr std::size_t kKeptLayouts = 128;
constexpr std::size_t kLongestKept = 2000;  // bytes
constexpr std::string_view kSystemEmojiFont = "AppleColorEmoji";

bool isSame(const TextFrame& a, const TextFrame& b) {
    return a.width == b.width && a.lineLimit == b.lineLimit && a.lineBreakMode == b.lineBreakMode &&
           a.alignment == b.alignment;
}

}  // namespace

class Typesetter::State {
public:
    std::shared_ptr<const SetText> layout(const StyledText& text, const TextFrame& frame) {
        if (text.string.size() > kLongestKept) return std::make_shared<SetText>(fonts, text, frame);
        const std::size_t hash =
            std::hash<std::string>()(text.string) ^ std::hash<double>()(frame.width);
        const auto found = std::ranges::find_if(kept_, [&](const Kept& kept) {
            return kept.hash == hash && isSame(kept.frame, frame) && kept.text == text;
        });
        if (found != kept_.end()) {
            found->lastUse = ++uses_;
            return found->layout;
        }
        auto layout = std::make_shared<SetText>(fonts, text, frame);
        Kept kept = {hash, text, frame, layout, ++uses_};
        if (kept_.size() < kKeptLayouts) {
            kept_.push_back(std::move(kept));
        } else {
            *std::ranges::min_element(kept_, {}, &Kept::lastUse) = std::move(kept);
        }
        return layout;
    }

    Fonts fonts;

private:
    struct Kept {
        std::size_t hash = 0;
        StyledText text;
        TextFrame frame;
        std::shared_ptr<const SetText> layout;
        std::uint64_t lastUse = 0;
    };

    std::vector<Kept> kept_;
    std::uint64_t uses_ = 0;
};

Typesetter::Typesetter() : state_(std::make_unique<State>()) {}
Typesetter::~Typesetter() = default;

std::unique_ptr<platform::TextLayout> Typesetter::layout(const StyledText& text,
                                                         const TextFrame& frame) {
    return std::make_unique<SharedText>(state_->layout(text, frame));
}

double Typesetter::lineHeight(const platform::Font& font) {
    return state_->layout(StyledText::plain("x", {.font = font}), {})->size().height;
}

std::vector<std::pair<char32_t, char32_t>> Typesetter::charactersOfFont(std::string_view name) {
    return state_->fonts.charactersOf(name == kSystemEmojiFont ? Fonts::kEmojiFamily : name);
}

}  // namespace tavrolin::adapters::pango
