#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// A calendar date of the proleptic Gregorian calendar, without time or time zone.
///
/// Date text is "YYYY-MM-DD". All arithmetic is on integer day numbers, so no result depends on the machine's settings.
/// The conversions follow Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms".
struct CivilDate {
    int year = 1970;
    int month = 1;  ///< 1 … 12
    int day = 1;    ///< 1 … days of the month

    auto operator<=>(const CivilDate&) const = default;

    /// Reads exactly four, two and two ASCII digits joined by "-"; none unless the date exists.
    static std::optional<CivilDate> parse(std::string_view text);
    static CivilDate fromDayNumber(std::int64_t days);

    bool isValid() const;
    std::string text() const;

    /// Days since 1970-01-01, which is day 0.
    std::int64_t dayNumber() const;
    /// Sunday is 0, Saturday 6.
    int weekday() const;

    CivilDate addingDays(std::int64_t days) const;
    /// The same day `months` later, or `onDay` of that month when given; clamped to the length of the month.
    CivilDate addingMonths(int months, std::optional<int> onDay = std::nullopt) const;
    /// The first Monday strictly after this date.
    CivilDate startOfNextWeek() const;
    CivilDate endOfMonth() const;

    static int daysInMonth(int year, int month);
};

}  // namespace parvela
