#pragma once

#include <optional>
#include <string_view>

namespace parvela::QuickAdd {

/// The shapes of words that hold numbers, and of names. All of them look at a whole, lower-cased word.
///
/// A digit is any decimal digit of Unicode, a letter or number any of its letters and numbers. But only ASCII digits
/// make up a number: a group with another digit in it is found and has the value `noNumber`.
inline constexpr int noNumber = -1;

/// "7", "22nd"
std::optional<int> matchDayOfMonth(std::u16string_view word);
/// "2026"; of this century only
std::optional<int> matchYear(std::u16string_view word);
/// One to three digits.
std::optional<int> matchCount(std::u16string_view word);

struct NumericDate {
    int year = 0;
    int month = 0;
    int day = 0;
};
/// "2026-03-01"
std::optional<NumericDate> matchIsoDate(std::u16string_view word);

struct MonthAndDay {
    enum class Year { none, twoDigits, fourDigits };

    int month = 0;
    int day = 0;
    Year yearForm = Year::none;
    int year = 0;  ///< as written
};
/// "3/1", "3/1/26", "3/1/2026"
std::optional<MonthAndDay> matchMonthAndDay(std::u16string_view word);

enum class DayHalf { beforeNoon, afterNoon };

struct ClockTime {
    int hour = 0;
    std::optional<int> minutes;
};
/// "5", "5:30"
std::optional<ClockTime> matchClockTime(std::u16string_view word);

struct SuffixedTime {
    ClockTime time;
    DayHalf half = DayHalf::beforeNoon;
};
/// "5pm", "5:30a.m."
std::optional<SuffixedTime> matchSuffixedTime(std::u16string_view word);

/// A letter or number, then letters, numbers, ".", "_", "'" and "-".
bool isHandle(std::u16string_view word);
bool isAllDigits(std::u16string_view word);

}  // namespace parvela::QuickAdd
