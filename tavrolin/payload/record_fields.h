#pragma once

#include <array>
#include <charconv>

#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/payload/record.h"

namespace tavrolin {

// What a record's description is shown to. Each visitor offers
//
//     value(key, field, declared)  a value, and what a strict reader expects (a text if not said)
//     integer(key, field)          a number that is written as its decimal text
//     record(key, field)           a record in a record
//     records(key, field)          a list of records
//     inlined(key, field)          a record that is archived as such, but whose own fields stand
//                                  among the others in the dictionary form

/// The decimal text of a number, without a detour over the heap.
inline foundation::Value decimalText(std::int64_t number) {
    std::array<char, 20> text{};
    const char* end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return std::string_view(text.data(), static_cast<std::size_t>(end - text.data()));
}

class ArchivingFields {
public:
    explicit ArchivingFields(foundation::KeyedArchiver& coder) : coder_(coder) {}

    void value(std::string_view key, const foundation::Value& field,
               foundation::Declared = foundation::Declared::string) {
        coder_.encode(key, field);
    }
    void integer(std::string_view key, std::int64_t field) {
        coder_.encode(key, decimalText(field));
    }
    template <class T>
    void record(std::string_view key, const foundation::Ref<T>& field) {
        coder_.encode(key, field.get());
    }
    template <class T>
    void records(std::string_view key, const RecordList<T>& field) {
        if (field) coder_.encode(key, *field);
    }
    template <class T>
    void inlined(std::string_view key, const foundation::Ref<T>& field) {
        record(key, field);
    }

private:
    foundation::KeyedArchiver& coder_;
};

class UnarchivingFields {
public:
    explicit UnarchivingFields(foundation::KeyedUnarchiver& coder) : coder_(coder) {}

    void value(std::string_view key, foundation::Value& field,
               foundation::Declared declared = foundation::Declared::string) {
        field = coder_.decode(key, declared);
    }
    void integer(std::string_view key, std::int64_t& field) {
        field = coder_.decode(key, foundation::Declared::string).integerValue();
    }
    template <class T>
    void record(std::string_view key, foundation::Ref<T>& field) {
        field = coder_.decodeRecord<T>(key);
    }
    template <class T>
    void records(std::string_view key, RecordList<T>& field) {
        if (coder_.contains(key)) field = coder_.decodeRecords<T>(key);
    }
    template <class T>
    void inlined(std::string_view key, foundation::Ref<T>& field) {
        record(key, field);
    }

private:
    foundation::KeyedUnarchiver& coder_;
};

/// How many keys the dictionary form has at most, so that it is made in its size.
class CountingFields {
public:
    std::size_t count() const { return count_; }

    void value(std::string_view, const foundation::Value& field,
               foundation::Declared = foundation::Declared::string) {
        count_ += field.isNil() ? 0U : 1U;
    }
    void integer(std::string_view, std::int64_t) { ++count_; }
    template <class T>
    void record(std::string_view, const foundation::Ref<T>& field) {
        count_ += field == nullptr ? 0U : 1U;
    }
    template <class T>
    void records(std::string_view, const RecordList<T>& field) {
        count_ += field ? 1U : 0U;
    }
    template <class T>
    void inlined(std::string_view, const foundation::Ref<T>& field) {
        if (field != nullptr) T::describe(*field, *this);
    }

private:
    std::size_t count_ = 0;
};

class DictionaryFields {
public:
    explicit DictionaryFields(std::size_t capacity)
        : dictionary_(foundation::Value::dictionaryWithCapacity(capacity)) {}
    foundation::Value take() { return std::move(dictionary_); }

    void value(std::string_view key, const foundation::Value& field,
               foundation::Declared = foundation::Declared::string) {
        if (!field.isNil()) dictionary_.set(key, field);
    }
    void integer(std::string_view key, std::int64_t field) {
        dictionary_.set(key, decimalText(field));
    }
    template <class T>
    void record(std::string_view key, const foundation::Ref<T>& field) {
        if (field != nullptr) dictionary_.set(key, field->toNSDictionary());
    }
    template <class T>
    void records(std::string_view key, const RecordList<T>& field) {
        if (field) dictionary_.set(key, CVNBase::CVNBaseDictionaryArray(*field));
    }
    template <class T>
    void inlined(std::string_view, const foundation::Ref<T>& field) {
        if (field != nullptr) T::describe(*field, *this);
    }

private:
    foundation::Value dictionary_;
};

template <class Self>
void CVNRecord<Self>::encodeWithCoder(foundation::KeyedArchiver& coder) const {
    ArchivingFields fields(coder);
    Self::describe(static_cast<const Self&>(*this), fields);
}

template <class Self>
foundation::Ref<Self> CVNRecord<Self>::initWithCoder(foundation::KeyedUnarchiver& coder) {
    auto self = std::make_shared<Self>();
    UnarchivingFields fields(coder);
    Self::describe(*self, fields);
    return self;
}

template <class Self>
foundation::Value CVNRecord<Self>::toNSDictionary() const {
    const auto& self = static_cast<const Self&>(*this);
    CountingFields counting;
    Self::describe(self, counting);
    DictionaryFields fields(counting.count());
    Self::describe(self, fields);
    return fields.take();
}

}  // namespace tavrolin
