#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/foundation/date.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// Fields of a moment, or of a span between two (the weekday fields are 0 then).
struct CalendarComponents {
    std::int64_t year = 0;
    std::int64_t month = 0;  // 1 to 12 in a moment
    std::int64_t day = 0;    // 1 to 31 in a moment
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    std::int64_t second = 0;
    std::int64_t weekday = 0;         // 1 Sunday to 7 Saturday
    std::int64_t weekdayOrdinal = 0;  // which one of its kind in the month, from 1

    bool operator==(const CalendarComponents&) const = default;
};

/// Texts and arithmetic of dates, in the Gregorian calendar. The dispatch port's clock says what
/// now is, and its time zone is the device's. Threads: any.
class CVNPushDateUtility {
public:
    /// "yyyy-MM-dd'T'HH:mm:ss" in UTC; fractions of a second are cut off.
    static std::string dateStringFromDate(foundation::Date date);
    /// The same format read back; nothing for nil or when it does not match. Raises for another
    /// kind.
    static std::optional<foundation::Date> dateFromString(const foundation::Value& string);
    /// "yyyy-MM-dd HH:mm:ss". Reads UTC as well, despite its name: stored schedule times need it.
    static std::optional<foundation::Date> dateFromNonUTCString(const foundation::Value& string);

    /// The device's offset from GMT now: "GMT+05:30"; "GMT" for none.
    static std::string getGMTTime();
    /// A weekday counted from 1 = Sunday as text counted from "0" = Sunday; "0" for any other
    /// number.
    static std::string_view weekdayStringFromDay(std::int64_t day);

    /// In the device's time zone.
    static CalendarComponents dateComponentsFromDate(foundation::Date date);
    /// The span from the date to now; all its fields are negative for a date in the future.
    static CalendarComponents timeIntervalSinceDate(foundation::Date date);

    /// The interval is closed.
    static bool checkIfDate(foundation::Date date, foundation::Date isBetweenDate,
                            foundation::Date andDate);
    /// The times are "HH:mm". When the hour is the start's, the end is not looked at.
    static bool checkIfTimeOfDate(foundation::Date date, std::string_view isBetweenTime,
                                  std::string_view andTime);
    /// False for no date; else whether now is at least that many seconds after it.
    static bool checkIfDate(std::optional<foundation::Date> date, std::int64_t hasPassedInterval);

    /// "2 hours ago"; the empty string for now and for the future. "second" never has a plural.
    static std::string timeIntervalStringFromDate(foundation::Date date);
};

}  // namespace tavrolin
