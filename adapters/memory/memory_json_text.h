#pragma once

#include "tavrolin/foundation/json.h"
#include "tavrolin/platform/json_text.h"

namespace tavrolin::adapters::memory {

/// The JSON port with nothing but the standard library.
class MemoryJSONText final : public platform::JSONText {
public:
    foundation::Expected<foundation::Value> parse(std::string_view text) const override {
        return foundation::valueWithJSON(text);
    }
    foundation::Expected<std::string> serialise(const foundation::Value& value,
                                                Style style) const override {
        using foundation::JSONStyle;
        return foundation::jsonWithValue(
            value, style == Style::pretty ? JSONStyle::pretty : JSONStyle::compact);
    }
};

}  // namespace tavrolin::adapters::memory
