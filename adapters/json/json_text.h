#pragma once

#include "tavrolin/platform/json_text.h"

namespace tavrolin::adapters::json {

/// The JSON port at speed: almost every text is read by simdjson. What that refuses (a byte-order
/// mark, numbers beyond 64 bits, every malformed text) is read again by the foundation's own
/// parser, which takes it or says where it is wrong.
///
/// Keeps a parser and a buffer for each thread, up to a fixed size.
class JSONText final : public platform::JSONText {
public:
    foundation::Expected<foundation::Value> parse(std::string_view text) const override;
    bool isJSON(std::string_view text) const override;
    foundation::Expected<std::string> serialise(const foundation::Value& value,
                                                Style style) const override;
};

}  // namespace tavrolin::adapters::json
