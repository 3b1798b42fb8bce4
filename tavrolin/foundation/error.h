#pragma once

#include <cstdint>
#include <string>

namespace tavrolin::foundation {

/// A failure that is handed over as a value, as the platform reports its own. `domain` says who
/// failed, `code` what, and the three texts are for people; an unused text is empty.
struct Error {
    std::string domain;
    std::int64_t code = 0;
    std::string localizedDescription;
    std::string localizedFailureReason{};
    std::string localizedRecoverySuggestion{};

    /// One line for a log: the domain, the code and whichever texts there are.
    std::string description() const;

    bool operator==(const Error&) const = default;
};

}  // namespace tavrolin::foundation
