#include "adapters/json/json_text.h"

#include <simdjson.h>

#include <cstring>
#include <memory>
#include <optional>

#include "tavrolin/foundation/json.h"

namespace tavrolin::adapters::json {

using foundation::Value;
namespace dom = simdjson::dom;

namespace {

constexpr std::size_t kDepth = foundation::kJSONDepth;
// What a thread keeps between texts: enough for every payload.
constexpr std::size_t kKeptSize = std::size_t{64} << 10U;

// A parser, and room for a text with the padding that the parser needs behind it.
struct Reader {
    explicit Reader(std::size_t size)
        : capacity(size), buffer(std::make_unique<char[]>(size + simdjson::SIMDJSON_PADDING)) {
        isUsable = parser.allocate(size, kDepth) == simdjson::SUCCESS;
    }

    dom::parser parser;
    std::size_t capacity;
    std::unique_ptr<char[]> buffer;
    bool isUsable;
};

Value valueOf(const dom::element& element);

Value arrayOf(const dom::array& array) {
    Value result = Value::arrayWithCapacity(array.size());
    for (const dom::element item : array)
        result.append(valueOf(item));
    return result;
}

Value dictionaryOf(const dom::object& object) {
    Value result = Value::dictionaryWithCapacity(object.size());
    for (const auto& [key, item] : object)
        result.set(Value(key), valueOf(item));  // of equal keys the last one stays
    return result;
}

// Goes as deep as the parser let the text go.
Value valueOf(const dom::element& element) {
    switch (element.type()) {
        case dom::element_type::ARRAY:
            return arrayOf(element.get_array().value_unsafe());
        case dom::element_type::OBJECT:
            return dictionaryOf(element.get_object().value_unsafe());
        case dom::element_type::STRING:
            return {element.get_string().value_unsafe()};
        case dom::element_type::INT64:
            return {element.get_int64().value_unsafe()};
        case dom::element_type::UINT64:
            return {element.get_uint64().value_unsafe()};
        case dom::element_type::DOUBLE:
            return {element.get_double().value_unsafe()};
        case dom::element_type::BOOL:
            return {element.get_bool().value_unsafe()};
        case dom::element_type::NULL_VALUE:
            break;
    }
    return Value::null();
}

// The thread's own reader, or for a long text one made for it.
Reader& readerFor(std::string_view text, std::optional<Reader>& once) {
    if (text.size() > kKeptSize) return once.emplace(text.size());
    static thread_local Reader kept(kKeptSize);
    return kept;
}

// The root doesn't outlive the reader's next text.
bool parseWith(Reader& reader, std::string_view text, dom::element& root) {
    if (!reader.isUsable || text.empty()) return false;
    std::memcpy(reader.buffer.get(), text.data(), text.size());
    return reader.parser.parse(reader.buffer.get(), text.size(), false).get(root) ==
           simdjson::SUCCESS;
}

}  // namespace

foundation::Expected<Value> JSONText::parse(std::string_view text) const {
    std::optional<Reader> once;
    dom::element root;
    if (parseWith(readerFor(text, once), text, root)) return valueOf(root);
    return foundation::valueWithJSON(text);
}

bool JSONText::isJSON(std::string_view text) const {
    std::optional<Reader> once;
    dom::element root;
    return parseWith(readerFor(text, once), text, root) ||
           static_cast<bool>(foundation::valueWithJSON(text));
}

foundation::Expected<std::string> JSONText::serialise(const Value& value, Style style) const {
    using foundation::JSONStyle;
    return foundation::jsonWithValue(
        value, style == Style::pretty ? JSONStyle::pretty : JSONStyle::compact);
}

}  // namespace tavrolin::adapters::json
