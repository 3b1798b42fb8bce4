#pragma once

#include <cstdint>
#include <string>

#include "tavrolin/foundation/date.h"

namespace tavrolin {

/// What is left of a countdown at a moment.
struct Countdown {
    std::string text;  // "HH:MM:SS"; hours go on beyond 24
    bool isOver = false;
};

/// An end that lies less than a second back is one that is only just not reached, deliberately; its
/// text is that of a negative time.
Countdown countdownAt(foundation::Date now, foundation::Date end);

}  // namespace tavrolin
