#include "tavrolin/events/date_utility.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <utility>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Date;
using foundation::Value;

namespace {

constexpr std::int64_t kSecondsPerDay = 86'400;
// The years that a date's text can name; anything else is taken as the nearest of them.
constexpr double kFirstMoment = -62'135'596'800;  // 0001-01-01T00:00:00
constexpr double kLastMoment = 253'402'300'799;   // 9999-12-31T23:59:59

Date now() {
    return platform::current().dispatch->now();
}

std::int64_t wholeSeconds(Date date) {
    const double seconds = std::isnan(date.secondsSince1970) ? 0 : date.secondsSince1970;
    return static_cast<std::int64_t>(std::floor(std::clamp(seconds, kFirstMoment, kLastMoment)));
}

// The time zone's, of a moment that every system can name.
std::int64_t offsetAt(Date date) {
    return platform::current().dispatch->secondsFromGMT({static_cast<double>(wholeSeconds(date))});
}

// The fields of a count of seconds, without any time zone.
CalendarComponents componentsOf(std::int64_t seconds) {
    const std::int64_t days = seconds >= 0 ? seconds / kSecondsPerDay
                                           : -((-seconds + kSecondsPerDay - 1) / kSecondsPerDay);
    const std::int64_t inDay = seconds - days * kSecondsPerDay;
    const std::chrono::sys_days day{std::chrono::days(days)};
    const std::chrono::year_month_day date(day);
    CalendarComponents result;
    result.year = static_cast<int>(date.year());
    result.month = static_cast<unsigned>(date.month());
    result.day = static_cast<unsigned>(date.day());
    result.hour = inDay / 3600;
    result.minute = inDay / 60 % 60;
    result.second = inDay % 60;
    result.weekday = std::chrono::weekday(day).c_encoding() + 1;
    result.weekdayOrdinal = (result.day - 1) / 7 + 1;
    return result;
}

void putDigits(char* at, std::int64_t number, int width) {
    for (int i = width - 1; i >= 0; --i, number /= 10)
        at[i] = static_cast<char>('0' + number % 10);
}

// The number in `width` digits at `at`, or -1.
std::int64_t digits(const char* at, int width) {
    std::int64_t number = 0;
    for (int i = 0; i < width; ++i) {
        if (at[i] < '0' || at[i] > '9') return -1;
        number = number * 10 + (at[i] - '0');
    }
    return number;
}

// Reads "yyyy-MM-dd?HH:mm:ss" with the given character in the middle, as UTC.
std::optional<Date> parsed(std::string_view text, char separator) {
    if (text.size() != 19 || text[4] != '-' || text[7] != '-' || text[10] != separator ||
        text[13] != ':' || text[16] != ':') {
        return std::nullopt;
    }
    const char* at = text.data();
    const std::int64_t year = digits(at, 4);
    const std::int64_t month = digits(at + 5, 2);
    const std::int64_t day = digits(at + 8, 2);
    const std::int64_t hour = digits(at + 11, 2);
    const std::int64_t minute = digits(at + 14, 2);
    const std::int64_t second = digits(at + 17, 2);
    if (year < 0 || month < 0 || day < 0 || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
        second < 0 || second > 59) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok()) return std::nullopt;
    const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
    return Date{static_cast<double>(days * kSecondsPerDay + hour * 3600 + minute * 60 + second)};
}

// Whole calendar units from the earlier to the later moment.
CalendarComponents spanBetween(std::int64_t from, std::int64_t to) {
    const CalendarComponents start = componentsOf(from);
    const CalendarComponents end = componentsOf(to);
    std::int64_t months = (end.year - start.year) * 12 + (end.month - start.month);
    // The start moved on by whole months; the last day of a shorter month stands for a later one.
    const auto moved = [&](std::int64_t by) {
        const std::int64_t month = start.year * 12 + (start.month - 1) + by;
        const std::chrono::year year(static_cast<int>(month / 12));
        const std::chrono::month ofYear(static_cast<unsigned>(month % 12) + 1);
        std::chrono::year_month_day date(year, ofYear,
                                         std::chrono::day(static_cast<unsigned>(start.day)));
        if (!date.ok()) date = year / ofYear / std::chrono::last;
        return std::chrono::sys_days(date).time_since_epoch().count() * kSecondsPerDay +
               start.hour * 3600 + start.minute * 60 + start.second;
    };
    if (moved(months) > to) --months;
    const std::int64_t rest = to - moved(months);
    CalendarComponents span;
    span.year = months / 12;
    span.month = months % 12;
    span.day = rest / kSecondsPerDay;
    span.hour = rest / 3600 % 24;
    span.minute = rest / 60 % 60;
    span.second = rest % 60;
    return span;
}

std::pair<std::int64_t, std::int64_t> hourAndMinute(std::string_view time) {
    const Value hour(time.substr(0, time.find(':')));
    const std::size_t last = time.rfind(':');
    const Value minute(last == std::string_view::npos ? time : time.substr(last + 1));
    return {hour.integerValue(), minute.integerValue()};
}

}  // namespace

std::string CVNPushDateUtility::dateStringFromDate(Date date) {
    const CalendarComponents fields = componentsOf(wholeSeconds(date));
    std::string text = "yyyy-MM-ddTHH:mm:ss";
    putDigits(&text[0], fields.year, 4);
    putDigits(&text[5], fields.month, 2);
    putDigits(&text[8], fields.day, 2);
    putDigits(&text[11], fields.hour, 2);
    putDigits(&text[14], fields.minute, 2);
    putDigits(&text[17], fields.second, 2);
    return text;
}

std::optional<Date> CVNPushDateUtility::dateFromString(const Value& string) {
    return parsed(string.string(), 'T');
}

std::optional<Date> CVNPushDateUtility::dateFromNonUTCString(const Value& string) {
    return parsed(string.string(), ' ');
}

std::string CVNPushDateUtility::getGMTTime() {
    const std::int64_t offset = platform::current().dispatch->secondsFromGMT(now());
    if (offset == 0) return "GMT";
    const std::int64_t minutes = std::abs(offset) / 60;
    std::string text = offset < 0 ? "GMT-00:00" : "GMT+00:00";
    putDigits(&text[4], minutes / 60, 2);
    putDigits(&text[7], minutes % 60, 2);
    return text;
}

std::string_view CVNPushDateUtility::weekdayStringFromDay(std::int64_t day) {
    static constexpr std::array<std::string_view, 6> kFromMonday = {"1", "2", "3", "4", "5", "6"};
    return day >= 2 && day <= 7 ? kFromMonday[static_cast<std::size_t>(day - 2)] : "0";
}

CalendarComponents CVNPushDateUtility::dateComponentsFromDate(Date date) {
    return componentsOf(wholeSeconds(date) + offsetAt(date));
}

CalendarComponents CVNPushDateUtility::timeIntervalSinceDate(Date date) {
    // One offset for both ends: a change of the clock between them is no time that passed.
    const std::int64_t offset = offsetAt(date);
    const std::int64_t from = wholeSeconds(date) + offset;
    const std::int64_t to = wholeSeconds(now()) + offset;
    if (from <= to) return spanBetween(from, to);
    const CalendarComponents span = spanBetween(to, from);
    return {-span.year, -span.month, -span.day, -span.hour, -span.minute, -span.second, 0, 0};
}

bool CVNPushDateUtility::checkIfDate(Date date, Date isBetweenDate, Date andDate) {
    return isBetweenDate <= date && date <= andDate;
}

bool CVNPushDateUtility::checkIfTimeOfDate(Date date, std::string_view isBetweenTime,
                                           std::string_view andTime) {
    const auto [startHour, startMinute] = hourAndMinute(isBetweenTime);
    const auto [endHour, endMinute] = hourAndMinute(andTime);
    const CalendarComponents time = dateComponentsFromDate(date);
    if (time.hour < startHour || time.hour > endHour) return false;
    // The end's minute is not checked here, even when both hours are the same: deliberate.
    if (time.hour == startHour) return time.minute >= startMinute;
    return time.hour != endHour || time.minute <= endMinute;
}

bool CVNPushDateUtility::checkIfDate(std::optional<Date> date, std::int64_t hasPassedInterval) {
    return date &&
           foundation::secondsBetween(*date, now()) >= static_cast<double>(hasPassedInterval);
}

std::string CVNPushDateUtility::timeIntervalStringFromDate(Date date) {
    const CalendarComponents span = timeIntervalSinceDate(date);
    const auto ago = [](std::int64_t count, std::string_view unit, std::string_view plural) {
        return std::to_string(count) + " " + std::string(unit) +
               std::string(count == 1 ? std::string_view() : plural) + " ago";
    };
    if (span.year >= 1) return ago(span.year, "year", "s");
    if (span.month >= 1) return ago(span.month, "month", "s");
    if (span.day >= 1) return ago(span.day, "day", "s");
    if (span.hour >= 1) return ago(span.hour, "hour", "s");
    if (span.minute >= 1) return ago(span.minute, "minute", "s");
    // "5 second ago": never made plural, and required so.
    if (span.second >= 1 && span.second <= 59) return ago(span.second, "second", "");
    return {};
}

}  // namespace tavrolin
