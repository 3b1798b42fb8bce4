#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::device {

// What the user does with an expanded notification. A step is a dictionary with its text as it was
// given, what it does, and its arguments.
inline constexpr std::string_view kStepText = "text";
inline constexpr std::string_view kStepDoes = "does";

inline constexpr std::string_view kStepTap = "tap";              // "x", "y": points
inline constexpr std::string_view kStepTapOn = "tap-on";         // "name"
inline constexpr std::string_view kStepPress = "press";          // "identifier"
inline constexpr std::string_view kStepReply = "reply";          // "identifier", "userText"
inline constexpr std::string_view kStepWait = "wait";            // "seconds"
inline constexpr std::string_view kStepDisappear = "disappear";  // nothing

/// A step from its text, "tap 10,20" or "press 1"; the error's description says what is wrong with
/// it.
foundation::Expected<foundation::Value> expandStep(std::string_view text);

/// How a notification is to be expanded, and what is wanted of it. Lengths are in points.
struct ExpandOrder {
    std::string identifier;
    double width = 375;
    double scale = 2;  // pixels for a point
    bool isDark = false;
    bool isCard = false;  // pictures show what a phone shows around the view as well
    std::vector<foundation::Value> steps = {};
    bool wantsTree = false;
    std::optional<std::string> png = std::nullopt;  // files to write
    std::optional<std::string> svg = std::nullopt;
    std::optional<std::string> cardPNG = std::nullopt;  // the card in any case
    unsigned fileMode = 0600;                           // of those that are new

    /// The files that are wanted.
    std::vector<std::string> pictures() const;
};

// What is taken; above 0 in any case.
inline constexpr double kWidestView = 16384;
inline constexpr double kLargestScale = 8;

}  // namespace tavrolin::device
