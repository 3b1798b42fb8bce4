#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tavrolin/foundation/keyed_archive.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::foundation {

/// Turns a record into data and back, found by a name; a stored attribute names the transformer
/// that its column goes through. Threads: any.
struct ValueTransformer {
    std::function<Value(const Archivable& record)> transformedValue;            // data or nil
    std::function<Ref<Archivable>(const Value& data)> reverseTransformedValue;  // or null

    /// A later registration under the same name replaces an earlier one.
    static void setForName(std::string_view name, ValueTransformer transformer);
    /// Null when nothing is registered under the name.
    static std::shared_ptr<const ValueTransformer> forName(std::string_view name);
};

}  // namespace tavrolin::foundation
