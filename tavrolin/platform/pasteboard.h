#pragma once

#include <string_view>

namespace tavrolin::platform {

/// The system's general pasteboard. Threads: any.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    /// Replaces what was on it. A text that can't be put there raises `foundation::Exception`.
    virtual void setString(std::string_view string) = 0;
};

}  // namespace tavrolin::platform
