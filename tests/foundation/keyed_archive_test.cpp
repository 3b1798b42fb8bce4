#include "tavrolin/foundation/keyed_archive.h"

#include <cbor.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::foundation {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Mode = KeyedUnarchiver::Mode;

struct Button : Archivable {
    static constexpr std::string_view kClassName = "Button";
    Value title;
    bool secure = true;

    std::string_view className() const override { return kClassName; }
    bool supportsSecureCoding() const override { return secure; }
    void encodeWithCoder(KeyedArchiver& coder) const override { coder.encode("title", title); }
    static Ref<Button> initWithCoder(KeyedUnarchiver& coder) {
        auto button = std::make_shared<Button>();
        button->title = coder.decode("title", Declared::string);
        return button;
    }
};

Ref<Button> button(Value title) {
    auto result = std::make_shared<Button>();
    result->title = std::move(title);
    return result;
}

// Its fields are read in an order of their own, and one of them is never read.
struct Card : Archivable {
    static constexpr std::string_view kClassName = "Card";
    Value id, custom, unread, when;
    Ref<Button> reply;
    std::vector<Ref<Button>> buttons;
    Ref<Card> inner;
    bool backwards = false;

    std::string_view className() const override { return kClassName; }
    bool supportsSecureCoding() const override { return true; }
    void encodeWithCoder(KeyedArchiver& coder) const override {
        coder.encode("id", id);
        coder.encode("reply", reply.get());
        coder.encode("unread", unread);
        coder.encode("buttons", buttons);
        coder.encode("custom", custom);
        coder.encode("inner", inner.get());
        coder.encode("when", when);
    }
    static Ref<Card> initWithCoder(KeyedUnarchiver& coder) {
        auto card = std::make_shared<Card>();
        card->when = coder.decode("when", Declared::date);
        card->buttons = coder.decodeRecords<Button>("buttons");
        card->id = coder.decode("id", Declared::string);
        card->reply = coder.decodeRecord<Button>("reply");
        card->inner = coder.decodeRecord<Card>("inner");
        card->custom = coder.decode("custom", Declared::any);
        return card;
    }
};

Value customValue() {
    return Value::dictionary({{"text", "Grüße aus der Küche 🍕"},
                              {"empty", ""},
                              {"list", Value::array({1, -1, 23, 24, 255, 256, 65536, Value::null(),
                                                     Value::array(), true, false})},
                              {"largest", std::numeric_limits<std::uint64_t>::max()},
                              {"smallest", std::numeric_limits<std::int64_t>::min()},
                              {"reals", Value::array({0.0, -0.0, 1.5, -2.0, 65504.0, 65536.0, 0.1,
                                                      1e-8, 3.4e38, 1e300, INFINITY, -INFINITY})},
                              {"data", Value::data(Bytes{0, 1, 255})},
                              {"date", Date{1764000000.25}},
                              {"a key of more than twenty-three bytes", std::string(300, 'x')}});
}

Card sampleCard() {
    Card card;
    card.id = "card-1";
    card.unread = Value::array({Value::dictionary({{"deep", Value::array({1, 2})}})});
    card.when = Date{1700000000};
    card.custom = customValue();
    card.reply = button("Reply");
    card.buttons = {button("Yes"), button("No"), button({})};
    card.inner = std::make_shared<Card>();
    card.inner->id = "card-2";
    card.inner->buttons = {button("Inner")};
    return card;
}

void expectSample(const Card& card) {
    EXPECT_EQ(card.id, "card-1");
    EXPECT_EQ(card.when, Date{1700000000});
    EXPECT_EQ(card.custom, customValue());
    ASSERT_TRUE(card.reply);
    EXPECT_EQ(card.reply->title, "Reply");
    ASSERT_EQ(card.buttons.size(), 3U);
    EXPECT_EQ(card.buttons[1]->title, "No");
    EXPECT_TRUE(card.buttons[2]->title.isNil());
    ASSERT_TRUE(card.inner);
    EXPECT_EQ(card.inner->id, "card-2");
    EXPECT_EQ(card.inner->buttons.at(0)->title, "Inner");
    EXPECT_FALSE(card.inner->inner);
    EXPECT_TRUE(card.inner->custom.isNil());
}

TEST(KeyedArchive, GivesBackANestedRecordReadInAnotherOrder) {
    const Bytes archive = KeyedArchiver::archivedData(sampleCard(), true);
    for (const Mode mode : {Mode::strict, Mode::lenient}) {
        const Ref<Card> card = KeyedUnarchiver::unarchive<Card>(archive, mode);
        ASSERT_TRUE(card);
        expectSample(*card);
    }
    EXPECT_EQ(KeyedUnarchiver::unarchive<Button>(archive), nullptr);
}

TEST(KeyedArchive, KeepsTheKindAndTheSignOfEveryPlainValue) {
    const Value value = customValue();
    const Value back = KeyedUnarchiver::unarchiveValue(KeyedArchiver::archivedData(value));
    EXPECT_EQ(back, value);
    EXPECT_TRUE(back["largest"].isUnsigned());
    EXPECT_TRUE(std::signbit(back["reals"].at(1).doubleValue()));
    EXPECT_EQ(back["reals"].at(3).kind(), Value::Kind::real);
    EXPECT_EQ(back["list"].at(9).kind(), Value::Kind::boolean);
    EXPECT_EQ(back.entries()[0].key, "text");
    const Value nan = KeyedUnarchiver::unarchiveValue(KeyedArchiver::archivedData(Value(NAN)));
    EXPECT_TRUE(std::isnan(nan.doubleValue()));
}

// A record of any number of fields: its head grows when there are more than fit in one byte.
struct Wide : Archivable {
    static constexpr std::string_view kClassName = "Wide";
    std::size_t count = 0;

    std::string_view className() const override { return kClassName; }
    bool supportsSecureCoding() const override { return true; }
    void encodeWithCoder(KeyedArchiver& coder) const override {
        for (std::size_t i = 0; i < count; ++i)
            coder.encode("field" + std::to_string(i), i);
        coder.encode("reply", button("Reply").get());
    }
    static Ref<Wide> initWithCoder(KeyedUnarchiver& coder) {
        auto wide = std::make_shared<Wide>();
        EXPECT_FALSE(coder.contains("missing"));
        while (coder.decode("field" + std::to_string(wide->count), Declared::number) ==
                   Value(wide->count) &&
               coder.contains("field" + std::to_string(wide->count))) {
            ++wide->count;
        }
        EXPECT_EQ(coder.decodeRecord<Button>("reply")->title, "Reply");
        return wide;
    }
};

TEST(KeyedArchive, TakesRecordsOfAnyNumberOfFields) {
    for (const std::size_t count : {0U, 22U, 23U, 31U, 32U, 254U, 255U, 300U, 70000U}) {
        Wide wide;
        wide.count = count;
        const Bytes archive = KeyedArchiver::archivedData(wide, true);
        if (count > 300) {
            EXPECT_NO_THROW(KeyedUnarchiver::unarchive<Button>(archive));
        } else {
            EXPECT_EQ(KeyedUnarchiver::unarchive<Wide>(archive)->count, count);
        }
    }
}

TEST(KeyedArchive, OnlyAStrictReaderLooksAtWhatIsDeclared) {
    Button wrong;
    wrong.title = Value::dictionary({{"a", 1}});
    const Bytes archive = KeyedArchiver::archivedData(wrong, true);
    EXPECT_EQ(KeyedUnarchiver::unarchive<Button>(archive)->title, wrong.title);
    EXPECT_THROW(KeyedUnarchiver::unarchive<Button>(archive, Mode::strict), Exception);
}

TEST(KeyedArchive, RefusesToWriteWhatNoReaderWouldTakeBack) {
    Card card = sampleCard();
    card.reply->secure = false;
    EXPECT_THROW(KeyedArchiver::archivedData(card, true), Exception);
    EXPECT_NO_THROW(KeyedArchiver::archivedData(card, false));

    const auto nested = [](int levels) {
        Value value = 1;
        for (int i = 0; i < levels; ++i)
            value = Value::array({value});
        return value;
    };
    const Bytes deepest = KeyedArchiver::archivedData(nested(1024));
    EXPECT_EQ(KeyedUnarchiver::unarchiveValue(deepest), nested(1024));
    EXPECT_THROW(KeyedArchiver::archivedData(nested(1025)), Exception);
}

TEST(KeyedArchive, RepairsTextsThatAreNotUtf8) {
    Button broken;
    broken.title = "caf\xC3";
    const Bytes archive = KeyedArchiver::archivedData(broken, true);
    EXPECT_EQ(KeyedUnarchiver::unarchive<Button>(archive)->title, "caf\xEF\xBF\xBD");
}

TEST(KeyedArchive, NamesWhatIsWrongWithHostileBytes) {
    const auto deep = [](std::uint8_t first, std::size_t count) {
        Bytes bytes(count, first);
        bytes.push_back(0);
        return bytes;
    };
    const struct {
        Bytes bytes;
        const char* reason;
    } cases[] = {
        {{}, "cut short"},
        {{0x82, 0x01}, "promises 2 items"},
        {{0x63, 'a', 'b'}, "promises 3 bytes"},
        {{0x5B, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "promises"},
        {{0x9B, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}, "promises"},
        {{0xBB, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x60, 0x01}, "promises"},
        {{0x19, 0x01}, "cut short"},
        {{0x01, 0x02}, "trail behind"},
        {{0x62, 0xC3, 0x28}, "not UTF-8"},
        {{0x9F, 0xFF}, "indefinite length"},
        {{0xA1, 0x01, 0x02}, "no text"},
        {{0x3B, 0x80, 0, 0, 0, 0, 0, 0, 0}, "beyond 64 bits"},
        {{0xC1, 0x61, 'x'}, "no number of seconds"},
        {{0xC2, 0x41, 0x01}, "unknown tag 2"},
        {{0xD8, 0x1B, 0x82, 0x01, 0xA0}, "without name and fields"},
        {{0xD8, 0x1B, 0x82, 0x61, 'x', 0x80}, "without name and fields"},
        {{0xD8, 0x1B, 0x82, 0x61, 'x', 0xA0}, "plain value"},
        {{0xF7}, "simple value"},
        {{0xF8, 0x14}, "simple value"},
        {{0x1C}, "begins no item"},
        {deep(0x81, 1025), "deeper than 1024"},
        {deep(0x81, 1000000), "deeper than 1024"},
        {deep(0xD8, 1000000), "unknown tag"},
    };
    for (const auto& hostile : cases) {
        try {
            KeyedUnarchiver::unarchiveValue(hostile.bytes);
            ADD_FAILURE() << "taken, but expected: " << hostile.reason;
        } catch (const Exception& exception) {
            EXPECT_THAT(exception.reason(), testing::HasSubstr(hostile.reason));
            EXPECT_EQ(exception.name(), Exception::kInvalidArchive);
        }
    }
}

TEST(KeyedArchive, EveryTruncationRaisesAndNoFlippedByteCrashes) {
    Card card = sampleCard();
    const Bytes archive = KeyedArchiver::archivedData(card, true);
    for (std::size_t length = 0; length < archive.size(); ++length) {
        // A buffer of its own, so that a sanitizer sees a read beyond the end.
        const Bytes cut(archive.begin(), archive.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_THROW(KeyedUnarchiver::unarchive<Card>(cut), Exception) << length;
    }
    for (std::size_t at = 0; at < archive.size(); ++at) {
        for (const unsigned flip : {1U, 2U, 4U, 8U, 16U, 32U, 64U, 128U, 255U}) {
            Bytes flipped = archive;
            flipped[at] = static_cast<std::uint8_t>(flipped[at] ^ flip);
            try {
                KeyedUnarchiver::unarchive<Card>(flipped);
            } catch (const Exception&) {
            }
        }
    }
}

// --- Another reader of the same format --------------------------------------------------------

Value fromCbor(const cbor_item_t* item);

std::string textOf(const cbor_item_t* item) {
    EXPECT_TRUE(cbor_isa_string(item));
    return {reinterpret_cast<const char*>(cbor_string_handle(item)), cbor_string_length(item)};
}

Value mapFromCbor(const cbor_item_t* item) {
    Value map = Value::dictionary();
    const cbor_pair* pairs = cbor_map_handle(item);
    for (std::size_t i = 0; i < cbor_map_size(item); ++i) {
        map.set(textOf(pairs[i].key), fromCbor(pairs[i].value));
    }
    return map;
}

Value fromCbor(const cbor_item_t* item) {
    switch (cbor_typeof(item)) {
        case CBOR_TYPE_UINT:
            return cbor_get_int(item);
        case CBOR_TYPE_NEGINT:
            return -1 - static_cast<std::int64_t>(cbor_get_int(item));
        case CBOR_TYPE_BYTESTRING:
            return Value::data({cbor_bytestring_handle(item), cbor_bytestring_length(item)});
        case CBOR_TYPE_STRING:
            return textOf(item);
        case CBOR_TYPE_ARRAY: {
            Value array = Value::array();
            for (std::size_t i = 0; i < cbor_array_size(item); ++i)
                array.append(fromCbor(cbor_array_handle(item)[i]));
            return array;
        }
        case CBOR_TYPE_MAP:
            return mapFromCbor(item);
        case CBOR_TYPE_TAG: {
            cbor_item_t* inner = cbor_tag_item(item);
            Value result = cbor_tag_value(item) == 1 ? Value(Date{cbor_float_get_float(inner)})
                                                     : fromCbor(inner);
            cbor_decref(&inner);
            return result;
        }
        default:
            if (cbor_is_float(item)) return cbor_float_get_float(item);
            return cbor_is_bool(item) ? Value(cbor_get_bool(item)) : Value::null();
    }
}

TEST(KeyedArchive, IsReadAlikeByAnotherCborReader) {
    Card card;
    card.id = "card-1";
    card.custom = customValue();
    card.buttons = {button("Yes"), nullptr};
    const Bytes archive = KeyedArchiver::archivedData(card, true);
    cbor_load_result outcome{};
    cbor_item_t* item = cbor_load(archive.data(), archive.size(), &outcome);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(outcome.read, archive.size());
    const Value yes = Value::array({"Button", Value::dictionary({{"title", "Yes"}})});
    EXPECT_EQ(
        fromCbor(item),
        Value::array({"Card", Value::dictionary({{"id", "card-1"},
                                                 {"buttons", Value::array({yes, Value::null()})},
                                                 {"custom", customValue()}})}));
    cbor_decref(&item);
}

}  // namespace
}  // namespace tavrolin::foundation
