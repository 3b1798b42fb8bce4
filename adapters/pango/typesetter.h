#pragma once

#include <memory>

#include "tavrolin/platform/typesetter.h"

namespace tavrolin::adapters::pango {

/// Sets text with Pango, in Inter, and in Noto where Inter has no characters (see fonts.h).
///
/// The advances are those of the outlines, at every size and scale. Of one text, at most 5,000
/// characters, 200 lines and, where the number of lines is limited, as many characters as so many
/// lines can show are set; the rest counts as truncated.
///
/// The last layouts are kept, so that setting a text again costs next to nothing.
class Typesetter : public platform::Typesetter {
public:
    /// Raises when the system has no fonts. Reads their files on first use only.
    Typesetter();
    ~Typesetter() override;
    Typesetter(const Typesetter&) = delete;
    Typesetter& operator=(const Typesetter&) = delete;

    std::unique_ptr<platform::TextLayout> layout(const platform::StyledText& text,
                                                 const platform::TextFrame& frame) override;
    double lineHeight(const platform::Font& font) override;
    std::vector<std::pair<char32_t, char32_t>> charactersOfFont(std::string_view name) override;

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace tavrolin::adapters::pango
