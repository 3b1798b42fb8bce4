#include "adapters/plist/property_list.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "adapters/plist/structure.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::adapters::plist {

using foundation::Error;
using foundation::Value;

namespace {

constexpr std::size_t kLargest = std::size_t{4} * 1024 * 1024;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr double kSecondsTo2001 = 978'307'200;  // from 1970

struct FreeNode {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

Error errorWith(std::string text) {
    return {"PropertyListErrorDomain", 0, std::move(text)};
}

// Takes the text over, whose memory came from malloc.
std::string taken(char* text) {
    const std::unique_ptr<char, decltype(&std::free)> held(text, &std::free);
    return text == nullptr ? std::string() : std::string(text);
}

Value valueOf(plist_t node);

Value arrayOf(plist_t node) {
    const std::uint32_t count = plist_array_get_size(node);
    Value result = Value::arrayWithCapacity(count);
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    for (std::uint32_t i = 0; i < count; ++i) {
        plist_t item = nullptr;
        plist_array_next_item(node, iterator, &item);
        result.append(valueOf(item));
    }
    std::free(iterator);
    return result;
}

Value dictionaryOf(plist_t node) {
    Value result = Value::dictionaryWithCapacity(plist_dict_get_size(node));
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        if (item == nullptr) break;
        result.set(taken(key), valueOf(item));
    }
    std::free(iterator);
    return result;
}

Value scalarOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t flag = 0;
            plist_get_bool_val(node, &flag);
            return flag != 0;
        }
        case PLIST_UINT: {
            std::uint64_t number = 0;
            plist_get_uint_val(node, &number);
            // A negative number and the large one of the same bits look alike here; lists hold the
            // former.
            return static_cast<std::int64_t>(number);
        }
        case PLIST_UID: {
            std::uint64_t number = 0;
            plist_get_uid_val(node, &number);
            return number;
        }
        case PLIST_REAL: {
            double number = 0;
            plist_get_real_val(node, &number);
            return number;
        }
        case PLIST_DATE: {
            std::int32_t seconds = 0;
            std::int32_t microseconds = 0;
            plist_get_date_val(node, &seconds, &microseconds);
            return foundation::Date{kSecondsTo2001 + seconds + microseconds / 1e6};
        }
        case PLIST_DATA: {
            std::uint64_t size = 0;
            const char* bytes = plist_get_data_ptr(node, &size);
            return Value::data({reinterpret_cast<const std::uint8_t*>(bytes), size});
        }
        case PLIST_STRING: {
            std::uint64_t size = 0;
            const char* text = plist_get_string_ptr(node, &size);
            return foundation::repairedUtf8({text, size});
        }
        default:
            return Value::null();
    }
}

Value valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_ARRAY:
            return arrayOf(node);
        case PLIST_DICT:
            return dictionaryOf(node);
        default:
            return scalarOf(node);
    }
}

}  // namespace

foundation::Expected<Value> readPropertyList(std::string_view bytes) {
    if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(kByteOrderMark.size());
    if (bytes.empty()) return errorWith("the property list is empty");
    if (bytes.size() > kLargest) return errorWith("the property list has more than 4 MB");
    const bool isBinary = bytes.starts_with("bplist");
    if (!(isBinary ? binaryIsWithinBounds(bytes) : xmlIsWithinBounds(bytes))) {
        return errorWith("the property list is too deep, too large or damaged");
    }
    plist_t root = nullptr;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    if (isBinary) {
        plist_from_bin(bytes.data(), size, &root);
    } else {
        plist_from_xml(bytes.data(), size, &root);
    }
    const Node owner(root);
    if (!owner) return errorWith("this is no property list, or a damaged one");
    return valueOf(root);
}

}  // namespace tavrolin::adapters::plist
