#pragma once

#include <string_view>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::adapters::plist {

/// Reads a property list, XML or binary; everything in it is taken as hostile. Refused with an
/// error: what is larger than 4 MB, deeper than 64 levels, holds more than 100,000 values (one that
/// is referred to twice counts twice), or is broken. Unsigned integers keep their value;
/// keyed-archive references are integers. Threads: any.
foundation::Expected<foundation::Value> readPropertyList(std::string_view bytes);

}  // namespace tavrolin::adapters::plist
