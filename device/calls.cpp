#include "device/calls.h"

#include <string>

#include "device/content_values.h"
#include "device/device_error.h"
#include "tavrolin/core/logger.h"

namespace tavrolin::device {

void Calls::keep(std::string_view operation, const foundation::Value& arguments) {
    try {
        const auto text = json_.serialise(jsonForm(arguments), platform::JSONText::Style::compact);
        if (!text) throw DeviceError(text.error().localizedDescription);
        state_.addCall({std::string(operation), *text, dispatch_.now()});
    } catch (const DeviceError& error) {
        log(LogLevel::error, "-[Calls keep:]",
            formatMessage("Could not keep the call %@: %@", {operation, error.what()}));
    }
}

}  // namespace tavrolin::device
