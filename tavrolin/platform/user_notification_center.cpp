#include "tavrolin/platform/user_notification_center.h"

#include "tavrolin/foundation/exception.h"

namespace tavrolin::platform {

TimeIntervalTrigger TimeIntervalTrigger::withTimeInterval(double seconds) {
    if (!(seconds > 0)) {
        foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                     "time interval must be greater than 0");
    }
    return TimeIntervalTrigger(seconds);
}

}  // namespace tavrolin::platform
