#include "tavrolin/foundation/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::foundation {
namespace {

constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();
constexpr auto kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr auto kLargestUnsigned = std::numeric_limits<std::uint64_t>::max();

TEST(Value, KeepsTextsAndDataOfEveryLength) {
    for (std::size_t length = 0; length <= 40; ++length) {
        std::string text;
        for (std::size_t i = 0; i < length; ++i)
            text += static_cast<char>('a' + i % 26);
        EXPECT_EQ(Value(text).string(), text);
        EXPECT_EQ(Value::dictionary({{text, 7}})[text], 7) << length;
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        const Value data = Value::data({bytes, length});
        EXPECT_TRUE(std::equal(data.bytes().begin(), data.bytes().end(), bytes, bytes + length));
    }
    EXPECT_EQ(Value(std::string("a\0b", 3)).length(), 3U);
    EXPECT_TRUE(Value(static_cast<const char*>(nullptr)).isNil());
    EXPECT_FALSE(Value("").isNil());
    EXPECT_EQ(Value(std::string_view()), "");
}

TEST(Value, AChangeShowsToNoOtherHolder) {
    Value original = Value::dictionary({{"list", Value::array({1, 2})}, {"text", "kept"}});
    const Value before = original;
    Value list = original["list"];
    list.append(3);
    original.set("text", "changed");
    original.set("new", 1);
    EXPECT_EQ(before["list"].count(), 2U);
    EXPECT_EQ(before["text"], "kept");
    EXPECT_TRUE(before["new"].isNil());
    EXPECT_EQ(list.count(), 3U);

    Value shorter = before;
    EXPECT_TRUE(shorter.remove("text"));
    EXPECT_EQ(before.count(), 2U);
}

TEST(Value, MayBePutIntoItself) {
    Value list = Value::array({1});
    list.append(list);
    list.append(list.at(1));
    EXPECT_EQ(list.description(), "[1, [1], [1]]");

    Value tree = Value::dictionary({{"a key that lies in a block", 1}});
    tree.set(tree.entries()[0].key, tree);
    EXPECT_EQ(tree["a key that lies in a block"]["a key that lies in a block"], 1);
    tree = Value(tree["a key that lies in a block"]);
    EXPECT_EQ(tree.count(), 1U);

    // A part may also be moved out over the whole.
    Value outer = Value::array({Value::array({"a text that lies in a block"})});
    outer = std::move(const_cast<Value&>(outer.at(0)));
    EXPECT_EQ(outer.at(0), "a text that lies in a block");
}

TEST(Value, LeavesNilBehindWhenMoved) {
    for (Value value : {Value(1), Value("short"), Value(std::string(50, 'x')), Value::array({1})}) {
        const Value copy = value;
        const Value constructed = std::move(value);
        EXPECT_TRUE(value.isNil());  // NOLINT(bugprone-use-after-move): this is what is promised
        EXPECT_EQ(constructed, copy);
        Value assigned = "something else that lies in a block";
        value = copy;
        assigned = std::move(value);
        EXPECT_TRUE(value.isNil());  // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(assigned, copy);
        Value& same = assigned;
        assigned = same;
        EXPECT_EQ(assigned, copy);
    }
}

TEST(Value, AnswersFromNilWithTheEmptyResult) {
    const Value nil;
    EXPECT_FALSE(nil);
    EXPECT_TRUE(nil["a"]["b"].isNil());
    EXPECT_EQ(nil.string(), "");
    EXPECT_EQ(nil.count(), 0U);
    EXPECT_EQ(nil.integerValue(), 0);
    EXPECT_FALSE(nil.boolValue());
    EXPECT_TRUE(nil.items().empty());
    EXPECT_TRUE(nil.entries().empty());
    EXPECT_TRUE(nil.bytes().empty());
    EXPECT_TRUE(nil.lowercaseString().isNil());
    EXPECT_EQ(nil.date(), Date{});
    EXPECT_FALSE(Value().remove("a"));
    Value list;
    list.append(1);
    Value dictionary;
    dictionary.setIfPresent("absent", Value());
    EXPECT_TRUE(dictionary.isNil());
    dictionary.set("a", 1);
    EXPECT_TRUE(list.isArray());
    EXPECT_TRUE(dictionary.isDictionary());
}

TEST(Value, RaisesWhenAskedForWhatItIsNot) {
    const Value list = Value::array({1});
    const Value dictionary = Value::dictionary({{"a", 1}});
    const std::function<void()> attempts[] = {
        [&] { list["a"]; },
        [&] { list.string(); },
        [&] { list.integerValue(); },
        [&] { list.boolValue(); },
        [&] { list.entries(); },
        [&] { dictionary.items(); },
        [&] { dictionary.doubleValue(); },
        [&] { Value(1).string(); },
        [&] { Value(1)["a"]; },
        [&] { Value("text").count(); },
        [&] { Value("text").date(); },
        [&] { Value("text").bytes(); },
        [&] { Value::null()["a"]; },
        [&] { Value::null().integerValue(); },
        [&] { Value(1).lowercaseString(); },
        [&] { Value(Date{1}).doubleValue(); },
        [&] { Value(1).append(1); },
        [&] { Value(dictionary).append(1); },
        [&] { Value(list).set("a", 1); },
        [&] { Value(list).remove("a"); },
        [&] { Value(list).append(Value()); },
        [&] { Value(dictionary).set("a", Value()); },
        [&] { Value(dictionary).set(Value(1), 1); },
    };
    for (std::size_t i = 0; i < std::size(attempts); ++i) {
        EXPECT_THROW(attempts[i](), Exception) << i;
    }
    for (const Value& value : {list, Value()}) {
        try {
            value.at(1);
            ADD_FAILURE();
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.name(), Exception::kRange);
        }
    }
}

TEST(Value, ADictionaryKeepsItsOrder) {
    Value value = Value::dictionary({{"b", 1}, {"a", 2}, {"c", 3}});
    value.set("b", 4);
    value.remove("a");
    value.set("a", 5);
    EXPECT_EQ(value.description(), R"({"b": 4, "c": 3, "a": 5})");
}

// Against a plain list of pairs, over the sizes at which a dictionary changes its ways.
TEST(Value, ADictionaryOfAnySizeTakesAnySequenceOfChanges) {
    std::mt19937 random(7);
    for (const std::size_t keys : {5U, 40U, 600U}) {
        Value value;
        std::vector<std::pair<std::string, int>> expected;
        std::optional<Value> snapshot;
        for (int step = 0; step < 6000; ++step) {
            const std::string key = (random() % 2 == 0 ? "k" : "a key of some length ") +
                                    std::to_string(random() % keys);
            const auto found = std::find_if(expected.begin(), expected.end(),
                                            [&](const auto& pair) { return pair.first == key; });
            if (random() % 5 < 2) {
                EXPECT_EQ(value.remove(key), found != expected.end());
                if (found != expected.end()) expected.erase(found);
            } else if (found != expected.end()) {
                value.set(key, step);
                found->second = step;
            } else {
                value.set(key, step);
                expected.emplace_back(key, step);
            }
            if (step % 997 == 0) snapshot = value;  // now and then the block is shared
            const std::string probe =
                expected.empty() ? key : expected[random() % expected.size()].first;
            ASSERT_EQ(value[probe].isNil(), expected.empty());
        }
        ASSERT_EQ(value.count(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(value.entries()[i].key, expected[i].first);
            ASSERT_EQ(value[expected[i].first], expected[i].second);
        }
    }
}

TEST(Value, ReadsTextsAsFarAsTheyAreNumbers) {
    const struct {
        const char* text;
        std::int64_t integer;
        double real;
        bool boolean;
    } cases[] = {
        {"12ab", 12, 12, true},
        {"ab", 0, 0, false},
        {"", 0, 0, false},
        {" \t-7.9x", -7, -7.9, true},
        {"+5", 5, 5, true},
        {"+-5", 0, 0, false},
        {"--5", 0, 0, false},
        {"0x1F", 0, 0, false},
        {"007", 7, 7, true},
        {"-0", 0, 0, false},
        {".5", 0, 0.5, false},
        {"1e3", 1, 1000, true},
        {"99999999999999999999", kLargest, 1e20, true},
        {"-99999999999999999999", kSmallest, -1e20, true},
        {"1e400", 1, INFINITY, true},
        {"-1e400", -1, -INFINITY, true},
        {"1e-400", 1, 0, true},
        {"inf", 0, 0, false},
        {"nan", 0, 0, false},
        {"true", 0, 0, true},
        {"Yes", 0, 0, true},
        {"no", 0, 0, false},
        {"00t", 0, 0, true},
        {"٣", 0, 0, false},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(Value(each.text).integerValue(), each.integer) << each.text;
        EXPECT_EQ(Value(each.text).doubleValue(), each.real) << each.text;
        EXPECT_EQ(Value(each.text).boolValue(), each.boolean) << each.text;
    }
}

TEST(Value, ConvertsNumbersWithoutOverflow) {
    EXPECT_EQ(Value(1e300).integerValue(), kLargest);
    EXPECT_EQ(Value(-1e300).integerValue(), kSmallest);
    EXPECT_EQ(Value(NAN).integerValue(), 0);
    EXPECT_EQ(Value(-2.9).integerValue(), -2);
    EXPECT_EQ(Value(kLargestUnsigned).doubleValue(), 18446744073709551616.0);
    EXPECT_EQ(Value(kLargestUnsigned).description(), "18446744073709551615");
    EXPECT_TRUE(Value(kLargestUnsigned).isUnsigned());
    EXPECT_FALSE(Value(static_cast<std::uint64_t>(kLargest)).isUnsigned());
    EXPECT_TRUE(Value(0.1).boolValue());
}

TEST(Value, IsEqualByContent) {
    const Value one = Value::dictionary({{"a", 1}, {"b", Value::array({"x", 2.0})}});
    EXPECT_EQ(one, Value::dictionary({{"b", Value::array({"x", 2})}, {"a", true}}));
    const Value different[] = {
        Value(),
        Value::null(),
        Value(0),
        Value(-1),
        Value(kLargestUnsigned),
        Value(0.5),
        Value(""),
        Value("0"),
        Value(std::string(20, 'a')),
        Value(std::string(19, 'a') + "b"),
        Value(Date{0}),
        Value::data({}),
        Value::array(),
        Value::array({1}),
        Value::array({1, 2}),
        Value::dictionary(),
        Value::dictionary({{"a", 1}}),
        Value::dictionary({{"b", 1}}),
        Value::dictionary({{"a", 1}, {"b", 1}}),
    };
    for (std::size_t i = 0; i < std::size(different); ++i) {
        for (std::size_t j = 0; j < std::size(different); ++j) {
            EXPECT_EQ(different[i] == different[j], i == j) << i << ' ' << j;
        }
    }
}

TEST(Value, ThreadsMayHoldTheSameBlock) {
    const Value shared =
        Value::dictionary({{"list", Value::array({"a text that lies in a block"})}});
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([own = shared, i]() mutable {
            for (int round = 0; round < 2000; ++round) {
                Value copy = own;
                copy.set("round", round + i);
                Value list = copy["list"];
                list.append(round);
                own = round % 3 == 0 ? Value(std::move(copy)) : own;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(shared.count(), 1U);
    EXPECT_EQ(shared["list"].count(), 1U);
}

}  // namespace
}  // namespace tavrolin::foundation
