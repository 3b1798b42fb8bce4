#pragma once

#include <string>
#include <string_view>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::foundation {

enum class JSONStyle { compact, pretty };

/// Deeper texts and values are refused.
inline constexpr int kJSONDepth = 512;

/// Reads a JSON text (RFC 8259); every byte is taken as hostile. A byte-order mark at the start is
/// passed over. Of a key that occurs twice the last value counts, at the first one's place. An
/// integer beyond 64 bits becomes a real number. The error's description is one line with the
/// place, such as "line 3, column 7: a colon expected, not this"; columns count characters.
Expected<Value> valueWithJSON(std::string_view text);

/// Keys keep their order; a real number is written as one, in the shortest form that reads back the
/// same. Fails on what JSON has no form for: nil, dates, data, real numbers that are not finite,
/// text that is not UTF-8.
Expected<std::string> jsonWithValue(const Value& value, JSONStyle style);

}  // namespace tavrolin::foundation
