#include "tavrolin/foundation/predicate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tavrolin/foundation/exception.h"

namespace tavrolin::foundation {
namespace {

Value record() {
    return Value::dictionary({{"trid", "push-1"},
                              {"isRead", false},
                              {"isDismissed", 0},
                              {"time", Date{1000}},
                              {"scheduledDate", Date{2000}},
                              {"currentStatus", "scheduled"},
                              {"collapseKey", "sale"},
                              {"score", 2.5},
                              {"large", std::numeric_limits<std::uint64_t>::max()},
                              {"title", "O'Neill said \"hi\""},
                              {"tags", Value::array({"a", "b"})},
                              {"nothing", Value::null()},
                              {"cvnPayload", Value::dictionary({{"trid", "push-1"}})}});
}

struct Case {
    const char* format;
    std::vector<Value> arguments;
    bool expected;
};

TEST(Predicate, DecidesOnARecord) {
    const Value keys = Value::array({"news", "sale"});
    const Value ids = Value::array({"push-1", "push-2"});
    const Case cases[] = {
        // The texts in use.
        {"(trid = %@)", {"push-1"}, true},
        {"(trid = %@)", {"push-2"}, false},
        {"(trid = %@)", {Value()}, false},
        {"(isRead = %d and isDismissed = %d)", {0, 0}, true},
        {"(isRead = %d and isDismissed = %d)", {0, 1}, false},
        {"(time <= %@)", {Date{1000}}, true},
        {"(time <= %@)", {Date{999.5}}, false},
        {"(scheduledDate > %@ AND currentStatus = %@)", {Date{1999}, "scheduled"}, true},
        {"(scheduledDate > %@ AND currentStatus = %@)", {Date{2000}, "scheduled"}, false},
        {"(collapseKey IN %@)", {keys}, true},
        {"(collapseKey IN %@)", {ids}, false},
        {"NOT (trid IN %@)", {ids}, false},
        {"NOT (trid IN %@)", {keys}, true},
        {"NOT (cvnPayload.trid IN %@)", {ids}, false},
        // Binding, words in any case, blanks or none.
        {"trid = 'x' AND trid = 'y' OR trid = 'push-1'", {}, true},
        {"trid = 'push-1' OR trid = 'x' AND trid = 'y'", {}, true},
        {"(trid = 'push-1' || trid = 'x') && trid = 'y'", {}, false},
        {"not trid = 'x' and Not trid = 'y'", {}, true},
        {"!(score<2)&&!score>3", {}, true},
        // Sides and operators.
        {"score == 2.5", {}, true},
        {"score <> 2.5e0", {}, false},
        {"-3 < score", {}, true},
        {"score >= +2", {}, true},
        {"large > 9223372036854775807", {}, true},
        {"isRead = FALSE", {}, true},
        {"title = 'O\\'Neill said \"hi\"'", {}, true},
        {"title BEGINSWITH \"O'\"", {}, true},
        {"title endswith[c] 'HI\"'", {}, true},
        {"title CONTAINS 'SAID'", {}, false},
        {"title CONTAINS[c] 'SAID'", {}, true},
        {"currentStatus =[c] 'SCHEDULED'", {}, true},
        {"tags CONTAINS 'b'", {}, true},
        {"'c' IN tags", {}, false},
        // Comparing with nil.
        {"missing = nil", {}, true},
        {"missing != NIL", {}, false},
        {"trid != nil", {}, true},
        {"missing != 'x'", {}, true},
        {"missing < 1", {}, false},
        {"missing > 1", {}, false},
        {"missing IN %@", {ids}, false},
        {"trid IN missing", {}, false},
        {"missing BEGINSWITH ''", {}, false},
        {"missing.deeper = nil", {}, true},
        {"nothing = nil", {}, false},
        {"nothing = %@", {Value::null()}, true},
        {"trid = 1", {}, false},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(Predicate::withFormat(each.format, each.arguments)->evaluate(record()),
                  each.expected)
            << each.format;
    }
}

TEST(Predicate, DecidesOnAPlainValueThroughSelf) {
    const auto ours = Predicate::withFormat("self BEGINSWITH[c] %@", {"CVN"});
    EXPECT_TRUE(ours->evaluate(Value("cvnPushToken")));
    EXPECT_FALSE(ours->evaluate(Value("xCVN")));
    EXPECT_THROW(ours->evaluate(Value(1)), Exception);
}

TEST(Predicate, RefusesAMalformedFormat) {
    const struct {
        const char* format;
        std::vector<Value> arguments;
    } cases[] = {
        {"", {}},
        {"trid", {}},
        {"trid =", {}},
        {"= 'x'", {}},
        {"trid = 'x", {}},
        {"trid = 'x\\", {}},
        {"(trid = 'x'", {}},
        {"trid = 'x')", {}},
        {"trid = 'x' AND", {}},
        {"trid = 'x' trid = 'y'", {}},
        {"trid LIKE 'x'", {}},
        {"trid = AND", {}},
        {"a..b = 1", {}},
        {"a. = 1", {}},
        {"a =[cd] 'x'", {}},
        {"a <[c] 'x'", {}},
        {"a = 12ab", {}},
        {"a = -", {}},
        {"a = %s", {"x"}},
        {"a = %@", {}},
        {"a = %@ AND b = %@", {1}},
        {"a = 1", {1}},
        {"a = %d", {"1"}},
        {"a = %d", {1.5}},
        {"a = %d", {Value()}},
    };
    for (const auto& each : cases) {
        EXPECT_THROW(Predicate::withFormat(each.format, each.arguments), Exception) << each.format;
    }
    EXPECT_THROW(Predicate::withFormat(std::string(100000, '(')), Exception);
    EXPECT_THROW(Predicate::withFormat(std::string(100000, '!') + "a = 1"), Exception);
}

TEST(Predicate, RaisesForPairsThatHaveNoOrder) {
    const struct {
        const char* format;
        std::vector<Value> arguments;
    } cases[] = {{"trid < 1", {}},         {"time > 5", {}},    {"tags < tags", {}},
                 {"trid IN 'push-1'", {}}, {"score IN 3", {}},  {"score BEGINSWITH '2'", {}},
                 {"trid.deeper = 1", {}},  {"nothing < 1", {}}, {"trid > %@", {Date{}}}};
    for (const auto& each : cases) {
        const auto predicate = Predicate::withFormat(each.format, each.arguments);
        EXPECT_THROW(predicate->evaluate(record()), Exception) << each.format;
    }
}

TEST(Predicate, OrdersNumbersOfEveryKind) {
    const Value ascending[] = {NAN,
                               -INFINITY,
                               std::numeric_limits<std::int64_t>::min(),
                               -1.5,
                               false,
                               1,
                               1.5,
                               std::numeric_limits<std::int64_t>::max(),
                               std::numeric_limits<std::uint64_t>::max() - 1,
                               std::numeric_limits<std::uint64_t>::max()};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            const int expected = i < j ? -1 : static_cast<int>(i > j);
            EXPECT_EQ(compare(ascending[i], ascending[j]), expected) << i << ' ' << j;
        }
    }
}

}  // namespace
}  // namespace tavrolin::foundation
