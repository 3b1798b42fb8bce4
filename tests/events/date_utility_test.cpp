#include "tavrolin/events/date_utility.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin {
namespace {

using foundation::Date;
using foundation::Value;
using Dates = CVNPushDateUtility;

// A device in another time zone, with summer time from a moment on.
class ZonedDispatch : public platform::ForwardingDispatch {
public:
    using ForwardingDispatch::ForwardingDispatch;
    std::int64_t secondsFromGMT(Date date) const override {
        return offset + (date < summer ? 0 : 3600);
    }

    std::int64_t offset = 0;
    Date summer{std::numeric_limits<double>::infinity()};
};

class DateUtilityTest : public testing::Test {
protected:
    DateUtilityTest() {
        platform::Platform ports = memory_.platform();
        ports.dispatch = &dispatch_;
        platform::install(ports);
    }

    static Date date(const char* text) {
        const auto result = Dates::dateFromString(text);
        EXPECT_TRUE(result) << text;
        return result.value_or(Date{});
    }
    // Moves the clock on; it stands at 2024-01-01T00:00:00 first.
    void setNow(const char* text) {
        memory_.dispatch.advance(foundation::secondsBetween(memory_.dispatch.now(), date(text)));
    }

    adapters::memory::MemoryPlatform& memory_ = *new adapters::memory::MemoryPlatform;
    ZonedDispatch& dispatch_ = *new ZonedDispatch(memory_.dispatch);
};

TEST_F(DateUtilityTest, WritesAndReadsMomentsInUTC) {
    dispatch_.offset = 5 * 3600;  // has no say
    const std::pair<double, const char*> cases[] = {
        {0, "1970-01-01T00:00:00"},
        {-1, "1969-12-31T23:59:59"},
        {-86'400, "1969-12-31T00:00:00"},
        {951'782'400, "2000-02-29T00:00:00"},
        {1'704'067'199, "2023-12-31T23:59:59"},
        {4'107'542'400, "2100-03-01T00:00:00"},
        {-62'135'596'800, "0001-01-01T00:00:00"},
        {253'402'300'799, "9999-12-31T23:59:59"},
    };
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(Dates::dateStringFromDate({seconds}), text);
        EXPECT_EQ(Dates::dateFromString(text), Date{seconds}) << text;
        std::string blank = text;
        blank[10] = ' ';
        EXPECT_EQ(Dates::dateFromNonUTCString(blank), Date{seconds}) << blank;
    }
    EXPECT_EQ(Dates::dateStringFromDate({59.999}), "1970-01-01T00:00:59");
    EXPECT_EQ(Dates::dateStringFromDate({-0.5}), "1969-12-31T23:59:59");
    // Whatever a file says, there is a text.
    EXPECT_EQ(Dates::dateStringFromDate({1e300}), "9999-12-31T23:59:59");
    EXPECT_EQ(Dates::dateStringFromDate({-INFINITY}), "0001-01-01T00:00:00");
    EXPECT_EQ(Dates::dateStringFromDate({NAN}), "1970-01-01T00:00:00");
}

TEST_F(DateUtilityTest, GivesNothingForATextThatIsNoDate) {
    const std::string texts[] = {
        "",
        "2024-01-01",
        "2024-01-01 00:00:00",
        "2024-01-01T00:00:00Z",
        "2024-01-01T00:00",
        " 2024-01-01T00:00:0",
        "2024-1-01T00:00:000",
        "2024-13-01T00:00:00",
        "2024-00-01T00:00:00",
        "2024-01-00T00:00:00",
        "2024-04-31T00:00:00",
        "2023-02-29T00:00:00",
        "1900-02-29T00:00:00",
        "2024-01-01T24:00:00",
        "2024-01-01T00:60:00",
        "2024-01-01T00:00:60",
        "-024-01-01T00:00:00",
        "2024-01-01T+1:00:00",
        "2024/01/01T00:00:00",
        "2024-01-01T00.00.00",
        std::string("2024-01-01T00:00:0\0", 19),
    };
    for (const std::string& text : texts) {
        EXPECT_EQ(Dates::dateFromString(text), std::nullopt) << text;
        std::string blank = text;
        if (blank.size() > 10) blank[10] = blank[10] == 'T' ? ' ' : 'T';
        EXPECT_EQ(Dates::dateFromNonUTCString(blank), std::nullopt) << blank;
    }
    EXPECT_EQ(Dates::dateFromString({}), std::nullopt);
    EXPECT_EQ(Dates::dateFromNonUTCString({}), std::nullopt);
    EXPECT_THROW(Dates::dateFromString(20'240'101), foundation::Exception);
    EXPECT_THROW(Dates::dateFromNonUTCString(Value::array()), foundation::Exception);
}

TEST_F(DateUtilityTest, TellsTheDevicesOffset) {
    const std::pair<std::int64_t, const char*> cases[] = {{0, "GMT"},
                                                          {19'800, "GMT+05:30"},
                                                          {3600, "GMT+01:00"},
                                                          {-12'600, "GMT-03:30"},
                                                          {50'400, "GMT+14:00"},
                                                          {-900, "GMT-00:15"}};
    for (const auto& [offset, text] : cases) {
        dispatch_.offset = offset;
        EXPECT_EQ(Dates::getGMTTime(), text);
    }
    dispatch_.offset = 0;
    dispatch_.summer = date("2024-03-31T01:00:00");
    EXPECT_EQ(Dates::getGMTTime(), "GMT");
    setNow("2024-06-01T00:00:00");
    EXPECT_EQ(Dates::getGMTTime(), "GMT+01:00");
}

TEST_F(DateUtilityTest, CountsWeekdaysFromSunday) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {1, "0"}, {2, "1"}, {3, "2"}, {4, "3"},  {5, "4"},         {6, "5"},
        {7, "6"}, {8, "0"}, {0, "0"}, {-1, "0"}, {INT64_MAX, "0"}, {INT64_MIN, "0"}};
    for (const auto& [day, text] : cases)
        EXPECT_EQ(Dates::weekdayStringFromDay(day), text) << day;
}

TEST_F(DateUtilityTest, TakesAMomentApartInTheDevicesTimeZone) {
    const auto parts = [](const char* text) { return Dates::dateComponentsFromDate(date(text)); };
    EXPECT_EQ(parts("2024-02-29T23:30:07"), (CalendarComponents{2024, 2, 29, 23, 30, 7, 5, 5}));
    EXPECT_EQ(parts("2024-09-01T00:00:00"), (CalendarComponents{2024, 9, 1, 0, 0, 0, 1, 1}));
    EXPECT_EQ(parts("2024-09-07T00:00:00"), (CalendarComponents{2024, 9, 7, 0, 0, 0, 7, 1}));
    EXPECT_EQ(parts("2024-09-08T00:00:00"), (CalendarComponents{2024, 9, 8, 0, 0, 0, 1, 2}));
    EXPECT_EQ(parts("1969-12-31T23:59:59"), (CalendarComponents{1969, 12, 31, 23, 59, 59, 4, 5}));
    dispatch_.offset = 19'800;
    EXPECT_EQ(parts("2024-02-29T23:30:07"), (CalendarComponents{2024, 3, 1, 5, 0, 7, 6, 1}));
    dispatch_.offset = -18'000;
    EXPECT_EQ(parts("2024-01-01T04:59:59"), (CalendarComponents{2023, 12, 31, 23, 59, 59, 1, 5}));
    // Each moment has the offset of its own season.
    dispatch_.offset = 0;
    dispatch_.summer = date("2024-03-31T01:00:00");
    EXPECT_EQ(parts("2024-03-31T00:59:59").hour, 0);
    EXPECT_EQ(parts("2024-03-31T01:00:00").hour, 2);
}

TEST_F(DateUtilityTest, MeasuresASpanInWholeUnitsOfTheCalendar) {
    struct Case {
        const char* from;
        const char* to;
        CalendarComponents span;
    };
    const Case cases[] = {
        {"2024-01-10T00:00:00", "2024-01-10T00:00:00", {}},
        {"2022-11-09T22:58:57", "2024-01-11T00:00:00", {1, 2, 1, 1, 1, 3, 0, 0}},
        // The last day of a shorter month stands for a later one.
        {"2024-01-31T00:00:00", "2024-02-28T00:00:00", {0, 0, 28, 0, 0, 0, 0, 0}},
        {"2024-01-31T00:00:00", "2024-02-29T00:00:00", {0, 1, 0, 0, 0, 0, 0, 0}},
        {"2024-01-31T00:00:00", "2024-03-01T00:00:00", {0, 1, 1, 0, 0, 0, 0, 0}},
        {"2024-02-29T12:00:00", "2025-02-28T11:59:59", {0, 11, 29, 23, 59, 59, 0, 0}},
        {"2024-02-29T12:00:00", "2025-02-28T12:00:00", {1, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto& [from, to, span] : cases) {
        setNow(to);
        EXPECT_EQ(Dates::timeIntervalSinceDate(date(from)), span) << from << " to " << to;
    }
    // A date in the future: everything is negative.
    EXPECT_EQ(Dates::timeIntervalSinceDate(date("2026-04-01T13:01:02")),
              (CalendarComponents{-1, -1, -4, -1, -1, -2, 0, 0}));
}

TEST_F(DateUtilityTest, SaysHowLongAgo) {
    setNow("2025-03-31T12:00:00");
    const std::pair<const char*, const char*> cases[] = {
        {"2025-03-31T12:00:00", ""},
        {"2025-03-31T11:59:59", "1 second ago"},
        {"2025-03-31T11:59:55", "5 second ago"},
        {"2025-03-31T11:59:01", "59 second ago"},
        {"2025-03-31T11:59:00", "1 minute ago"},
        {"2025-03-31T11:58:00", "2 minutes ago"},
        {"2025-03-31T10:30:00", "1 hour ago"},
        {"2025-03-31T10:00:00", "2 hours ago"},
        {"2025-03-30T12:00:00", "1 day ago"},
        {"2025-03-01T12:00:00", "30 days ago"},
        {"2025-02-28T12:00:00", "1 month ago"},
        {"2024-04-01T12:00:00", "11 months ago"},
        {"2024-03-31T12:00:00", "1 year ago"},
        {"2015-01-01T00:00:00", "10 years ago"},
        {"2025-03-31T12:00:05", ""},
        {"2027-03-31T12:00:00", ""},
    };
    for (const auto& [from, text] : cases)
        EXPECT_EQ(Dates::timeIntervalStringFromDate(date(from)), text) << from;
}

TEST_F(DateUtilityTest, ComparesWithAnIntervalAndWithNow) {
    const Date at{100};
    EXPECT_TRUE(Dates::checkIfDate(at, Date{100}, Date{100}));
    EXPECT_TRUE(Dates::checkIfDate(at, Date{99}, Date{101}));
    EXPECT_FALSE(Dates::checkIfDate(at, Date{100.5}, Date{101}));
    EXPECT_FALSE(Dates::checkIfDate(at, Date{99}, Date{99.5}));
    EXPECT_FALSE(Dates::checkIfDate(at, Date{101}, Date{99}));

    const Date present = memory_.dispatch.now();
    const Date earlier{present.secondsSince1970 - 60};
    EXPECT_FALSE(Dates::checkIfDate(std::nullopt, 0));
    EXPECT_TRUE(Dates::checkIfDate(present, 0));
    EXPECT_TRUE(Dates::checkIfDate(earlier, 60));
    EXPECT_FALSE(Dates::checkIfDate(earlier, 61));
    EXPECT_FALSE(Dates::checkIfDate(Date{present.secondsSince1970 + 1}, 0));
    EXPECT_TRUE(Dates::checkIfDate(Date{present.secondsSince1970 + 1}, -1));
}

TEST_F(DateUtilityTest, LooksATimeUpInAWindowOfTheDay) {
    struct Case {
        const char* time;
        const char* start;
        const char* end;
        bool isInside;
    };
    const Case cases[] = {
        {"08:59", "09:00", "17:30", false},
        {"09:00", "09:00", "17:30", true},
        {"09:14", "09:15", "17:30", false},
        {"09:15", "09:15", "17:30", true},
        {"12:59", "09:15", "17:30", true},
        {"17:30", "09:15", "17:30", true},
        {"17:31", "09:15", "17:30", false},
        {"18:00", "09:15", "17:30", false},
        // In the start's hour the end is not looked at.
        {"09:50", "09:15", "09:30", true},
        {"09:10", "09:15", "09:30", false},
        // A window over midnight holds nothing.
        {"23:00", "22:00", "06:00", false},
        {"05:00", "22:00", "06:00", false},
        // Only the first and the last piece count; what is no number is 0.
        {"12:30", "09:99:15", "17", true},
        {"00:05", "x:y", "z", true},
        {"17:18", "9:0", "17", false},
    };
    for (const auto& [time, start, end, isInside] : cases) {
        const Date moment = date(("2024-05-05T" + std::string(time) + ":59").c_str());
        EXPECT_EQ(Dates::checkIfTimeOfDate(moment, start, end), isInside)
            << time << " in " << start << " to " << end;
    }
    dispatch_.offset = 19'800;  // half past two in the morning is eight o'clock there
    EXPECT_TRUE(Dates::checkIfTimeOfDate(date("2024-05-05T02:30:00"), "08:00", "09:00"));
    EXPECT_FALSE(Dates::checkIfTimeOfDate(date("2024-05-05T08:30:00"), "08:00", "09:00"));
}

}  // namespace
}  // namespace tavrolin
