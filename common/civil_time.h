#pragma once
// Calendar dates as Windows file times: 100-ns ticks since 1601-01-01 00:00, the date taken as
// it stands (no time zone).

#include <cstdint>
#include <optional>

namespace kq {

inline constexpr std::int64_t kFileTimeTicksPerSecond = 10000000;

// Days since 1970-01-01 of a date of the proleptic Gregorian calendar.
constexpr std::int64_t days_from_civil(std::int64_t year, unsigned month, unsigned day) {
    year -= month <= 2;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto year_of_era = static_cast<unsigned>(year - era * 400);
    const unsigned day_of_year = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const unsigned day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
    return era * 146097 + static_cast<std::int64_t>(day_of_era) - 719468;
}

struct CivilTime {
    std::int64_t year = 1601;
    unsigned month = 1, day = 1, hour = 0, minute = 0, second = 0;
};

// The time as a file time; nullopt outside the years 1601 to 30827 (the range Windows gives
// file times for) or for a field out of its range. A second of 60 (a leap second) is allowed.
constexpr std::optional<std::uint64_t> civil_file_time(const CivilTime& t) {
    constexpr std::int64_t kDaysFrom1601To1970 = 134774;
    if (t.year < 1601 || t.year > 30827 || t.month < 1 || t.month > 12 || t.day < 1 || t.day > 31 || t.hour > 23 ||
        t.minute > 59 || t.second > 60)
        return std::nullopt;
    const std::int64_t days = days_from_civil(t.year, t.month, t.day) + kDaysFrom1601To1970;
    const std::int64_t seconds = ((days * 24 + t.hour) * 60 + t.minute) * 60 + t.second;
    return static_cast<std::uint64_t>(seconds * kFileTimeTicksPerSecond);
}

static_assert(*civil_file_time({1601, 1, 2}) == 864000000000);
static_assert(*civil_file_time({1970, 1, 1}) == 116444736000000000);

} // namespace kq
