#include "tavrolin/content_ui/components/countdown.h"

#include <cmath>

#include "tavrolin/content_ui/two_digits.h"

namespace tavrolin {

Countdown countdownAt(foundation::Date now, foundation::Date end) {
    const double difference = end.secondsSince1970 - now.secondsSince1970;
    const double rest = std::trunc(difference) < 0 ? 0 : difference;
    const double hours = std::floor(rest / 3600);
    const double minutes = std::floor(rest / 60 - hours * 60);
    const double seconds = std::floor(rest - minutes * 60 - hours * 3600);
    const auto digits = [](double number) { return twoDigits(static_cast<std::int64_t>(number)); };
    return {digits(hours) + ":" + digits(minutes) + ":" + digits(seconds), std::trunc(rest) == 0};
}

}  // namespace tavrolin
