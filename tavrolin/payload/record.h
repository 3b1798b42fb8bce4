#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/keyed_archive.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// What every record of a payload is. Records are plain structs that their holders share and
/// change; a field keeps what stood in the payload, whatever its kind. Threads: one record is used
/// by one thread at a time.
struct CVNBase : foundation::Archivable {
    /// The record as it stands in a payload; a nil field leaves its key out.
    virtual foundation::Value toNSDictionary() const { return foundation::Value::dictionary(); }
    bool supportsSecureCoding() const override { return true; }

    /// Each record's dictionary, in order.
    template <class T>
    static foundation::Value CVNBaseDictionaryArray(
        const std::vector<foundation::Ref<T>>& records) {
        foundation::Value result = foundation::Value::arrayWithCapacity(records.size());
        for (const auto& record : records) {
            if (record != nullptr) result.append(record->toNSDictionary());
        }
        return result;
    }
};

/// A list of records; absent is nil, which is not the same as empty.
template <class T>
using RecordList = std::optional<std::vector<foundation::Ref<T>>>;

/// 0 for an absent list.
template <class T>
std::int64_t recordCount(const RecordList<T>& list) {
    return list ? static_cast<std::int64_t>(list->size()) : 0;
}

/// The record at the index; null for an absent list. Raises `foundation::Exception` beyond the
/// list's ends.
template <class T>
foundation::Ref<T> recordAtIndex(const RecordList<T>& list, std::int64_t index) {
    if (!list) return nullptr;
    if (index < 0 || index >= recordCount(list)) {
        foundation::Exception::raise(foundation::Exception::kRange,
                                     "index " + std::to_string(index) + " is beyond a list of " +
                                         std::to_string(recordCount(list)));
    }
    return (*list)[static_cast<std::size_t>(index)];
}

/// Gives `Self` its archive and its dictionary form, both made from the one description of its
/// fields, in order: `Self` has
///
///     static constexpr std::string_view kClassName;
///     template <class Record, class Fields> static void describe(Record&, Fields&);
///
/// The definitions are in record_fields.h, for the sources that describe records.
template <class Self>
struct CVNRecord : CVNBase {
    std::string_view className() const override { return Self::kClassName; }
    void encodeWithCoder(foundation::KeyedArchiver& coder) const override;
    foundation::Value toNSDictionary() const override;
    /// A key that is missing leaves its field nil, or 0.
    static foundation::Ref<Self> initWithCoder(foundation::KeyedUnarchiver& coder);
};

}  // namespace tavrolin
