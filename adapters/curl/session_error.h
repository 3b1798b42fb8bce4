#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "tavrolin/foundation/error.h"

namespace tavrolin::adapters::curl {

// Codes of the session's own errors; libcurl's own are positive.
inline constexpr std::int64_t kCancelled = -999;
inline constexpr std::int64_t kTimedOut = -1001;
inline constexpr std::int64_t kUnsupportedURL = -1002;
inline constexpr std::int64_t kTooLarge = -1103;

inline foundation::Error sessionError(std::int64_t code, std::string description) {
    return {"CurlURLSession", code, std::move(description)};
}

}  // namespace tavrolin::adapters::curl
