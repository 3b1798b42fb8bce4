#include "adapters/json/json_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "adapters/memory/memory_json_text.h"

namespace tavrolin::adapters {

namespace {

using foundation::Value;
using Style = platform::JSONText::Style;

const json::JSONText kFast;
const memory::MemoryJSONText kPlain;

std::string nested(int levels) {
    const auto count = static_cast<std::size_t>(levels);
    return std::string(count, '[') + std::string(count, ']');
}

std::string written(const Value& value) {
    const auto text = kFast.serialise(value, Style::compact);
    return text ? *text : text.error().localizedDescription;
}

}  // namespace

TEST(JSONText, ReadsTheSameWithBothParsers) {
    const struct {
        std::string text;
        Value expected;
    } cases[] = {
        {"\xEF\xBB\xBF{\"a\":1}", Value::dictionary({{"a", 1}})},
        {R"({"a":1,"b":2,"a":3})", Value::dictionary({{"a", 3}, {"b", 2}})},
        {R"("a\u0000b\ud83d\ude00\/")", Value(std::string("a\0b😀/", 8))},
        {"[-0, 9223372036854775807, 18446744073709551615]",
         Value::array({0, std::numeric_limits<std::int64_t>::max(),
                       std::numeric_limits<std::uint64_t>::max()})},
        {"18446744073709551616", 18446744073709551616.0},
        {"-9223372036854775809", -9223372036854775809.0},
        {"[1e-400, 0.00001, 1E+2]", Value::array({0.0, 0.00001, 100.0})},
        {" [ true , false , null , \"\" , {} ] ",
         Value::array({true, false, Value::null(), "", Value::dictionary()})},
        {nested(512), Value()},
    };
    for (const auto& each : cases) {
        for (const platform::JSONText* json : {static_cast<const platform::JSONText*>(&kFast),
                                               static_cast<const platform::JSONText*>(&kPlain)}) {
            const auto value = json->parse(each.text);
            ASSERT_TRUE(value) << each.text << ": " << value.error().localizedDescription;
            EXPECT_TRUE(json->isJSON(each.text)) << each.text;
            if (each.expected) {
                EXPECT_EQ(*value, each.expected) << each.text;
            }
        }
    }
    EXPECT_EQ(kFast.parse("18446744073709551616")->kind(), Value::Kind::real);
    EXPECT_EQ(kFast.parse("2.0")->kind(), Value::Kind::real);
    EXPECT_EQ(written(*kFast.parse(R"({"b":1,"a":2,"b":3})")), R"({"b":3,"a":2})");
}

TEST(JSONText, SaysInOneLineWhereATextIsWrong) {
    const struct {
        std::string text;
        std::string_view place;
    } cases[] = {
        {"", "line 1, column 1: "},
        {"  ", "line 1, column 3: "},
        {"{\"a\": 1,\n \"é\": tru}", "line 2, column 7: "},
        {"[1,]", "line 1, column 4: "},
        {"[1 2]", "line 1, column 4: "},
        {"{\"a\" 1}", "line 1, column 6: "},
        {"{a: 1}", "line 1, column 2: "},
        {"[01]", "line 1, column 3: "},
        {"[1.]", "line 1, column 4: "},
        {"[+1]", "line 1, column 2: "},
        {"[NaN]", "line 1, column 2: "},
        {"[1e400]", "line 1, column 2: "},
        {"\"a\nb\"", "line 1, column 3: "},
        {"\"abc", "line 1, column 5: "},
        {R"("\x")", "line 1, column 3: "},
        {R"(["\ud800"])", "line 1, column 3: "},
        {R"(["\ud800\u0041"])", "line 1, column 3: "},
        {R"(["\u12"])", "line 1, column 5: "},
        {"[\"a\xff\"]", "line 1, column 4: "},
        {"[\"\xed\xa0\x80\"]", "line 1, column 3: "},  // half a surrogate pair as bytes
        {"{} {}", "line 1, column 4: "},
        {std::string("{}\0", 3), "line 1, column 3: "},
        {nested(513), "line 1, column 513: "},
        {std::string(1'000'000, '['), "line 1, column 513: "},
    };
    for (const auto& each : cases) {
        const auto value = kFast.parse(each.text);
        ASSERT_FALSE(value) << each.text.substr(0, 40);
        EXPECT_FALSE(kFast.isJSON(each.text)) << each.text.substr(0, 40);
        const std::string& message = value.error().localizedDescription;
        EXPECT_TRUE(message.starts_with(each.place)) << each.text.substr(0, 40) << ": " << message;
        EXPECT_GT(message.size(), each.place.size());
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
}

TEST(JSONText, WritesWhatItReadsBackEqual) {
    const Value value =
        Value::dictionary({{"z", Value::array({1, -2.5, 1e300, 5.0, true, Value::null()})},
                           {"a", "quote \" slash \\ \n\t\x01 é 😀"},
                           {"large", std::numeric_limits<std::uint64_t>::max()},
                           {"empty", Value::array({Value::dictionary(), Value::array()})}});
    for (const Style style : {Style::compact, Style::pretty}) {
        const auto text = kFast.serialise(value, style);
        ASSERT_TRUE(text);
        EXPECT_EQ(*kFast.parse(*text), value) << *text;
    }
    EXPECT_EQ(written(value["z"]), "[1,-2.5,1e+300,5.0,true,null]");
    EXPECT_EQ(written("\"\\\n\x01/é"), R"("\"\\\n\u0001/é")");
    EXPECT_EQ(*kFast.serialise(Value::dictionary({{"a", Value::array({1})}, {"b", Value::array()}}),
                               Style::pretty),
              "{\n  \"a\": [\n    1\n  ],\n  \"b\": []\n}");
}

TEST(JSONText, EscapesACharacterWhereverItStands) {
    for (const char c : std::string("\0\x1f\"\\ !#[]\x7f", 10)) {
        for (std::size_t at = 0; at < 18; ++at) {
            for (const std::string_view filling : {"x", "é"}) {
                std::string text;
                for (std::size_t i = 0; i < 18; ++i)
                    text += i == at ? std::string(1, c) : std::string(filling);
                const auto read = kFast.parse(written(text));
                ASSERT_TRUE(read) << static_cast<int>(c) << " at " << at;
                EXPECT_EQ(*read, Value(text));
            }
        }
    }
}

TEST(JSONText, RefusesToWriteWhatJSONHasNoFormFor) {
    const std::uint8_t bytes[] = {1};
    Value deep = Value::array();
    for (int level = 1; level < 513; ++level)
        deep = Value::array({deep});
    for (const Value& value :
         {Value(), Value(foundation::Date{1}), Value::data(bytes), Value(std::nan("")),
          Value(HUGE_VAL), Value("\xff"), Value::dictionary({{"\xc0\x80", 1}}), deep}) {
        EXPECT_FALSE(kFast.serialise(value, Style::compact)) << value.description();
    }
}

}  // namespace tavrolin::adapters
