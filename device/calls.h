#pragma once

#include <string_view>

#include "device/system_state.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/json_text.h"

namespace tavrolin::device {

/// Writes down what leaves the library, with the clock's time. The library expects no failure from
/// those whom it calls: one is said in the log and goes no further. Threads: any.
class Calls {
public:
    Calls(SystemState& state, platform::Dispatch& dispatch, platform::JSONText& json)
        : state_(state), dispatch_(dispatch), json_(json) {}

    void keep(std::string_view operation, const foundation::Value& arguments);

private:
    SystemState& state_;
    platform::Dispatch& dispatch_;
    platform::JSONText& json_;
};

}  // namespace tavrolin::device
