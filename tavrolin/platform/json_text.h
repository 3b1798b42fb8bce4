#pragma once

#include <string>
#include <string_view>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::platform {

/// JSON text (RFC 8259) and values. Threads: any.
class JSONText {
public:
    enum class Style { compact, pretty };

    virtual ~JSONText() = default;

    /// Of a key that occurs twice the last value counts, at the first one's place. An integer
    /// beyond 64 bits becomes a real number. The error's description is one line with the place,
    /// such as "line 3, column 7: …". Never more than 512 levels deep.
    virtual foundation::Expected<foundation::Value> parse(std::string_view text) const = 0;

    /// Whether `parse` would take the text.
    virtual bool isJSON(std::string_view text) const { return static_cast<bool>(parse(text)); }

    /// Keys keep their order. Fails on what JSON has no form for: nil, dates, data, real numbers
    /// that are not finite, text that is not UTF-8.
    virtual foundation::Expected<std::string> serialise(const foundation::Value& value,
                                                        Style style) const = 0;
};

}  // namespace tavrolin::platform
