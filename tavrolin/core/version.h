#pragma once

#include <string_view>

namespace tavrolin {

inline constexpr std::string_view kCurrentSDKVersion = "3.5.7";
inline constexpr double TavrolinVersionNumber = 1.0;
// Two blanks before PROJECT: the marker's own form.
inline constexpr std::string_view TavrolinVersionString =
    "@(#)PROGRAM:Tavrolin  PROJECT:Tavrolin-1\n";

}  // namespace tavrolin
