#include <ParvelaKit/CivilDate.h>

#include <algorithm>

#include <fmt/format.h>

namespace parvela {

namespace {

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

constexpr int daysPerEra = 146097;
constexpr int epochOffset = 719468;  // days from 0000-03-01 to 1970-01-01

std::int64_t floorDivide(std::int64_t a, std::int64_t b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

/// The value of exactly these ASCII digits, or -1.
int digits(std::string_view text) {
    int value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

}  // namespace

std::optional<CivilDate> CivilDate::parse(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    const CivilDate date{digits(text.substr(0, 4)), digits(text.substr(5, 2)), digits(text.substr(8, 2))};
    return date.year >= 0 && date.isValid() ? std::optional(date) : std::nullopt;
}

CivilDate CivilDate::fromDayNumber(std::int64_t days) {
    const std::int64_t shifted = days + epochOffset;
    const std::int64_t era = floorDivide(shifted, daysPerEra);
    const auto dayOfEra = static_cast<int>(shifted - era * daysPerEra);
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int marchBasedMonth = (5 * dayOfYear + 2) / 153;
    const int day = dayOfYear - (153 * marchBasedMonth + 2) / 5 + 1;
    const int month = marchBasedMonth < 10 ? marchBasedMonth + 3 : marchBasedMonth - 9;
    const auto year = static_cast<int>(yearOfEra + era * 400) + (month <= 2 ? 1 : 0);
    return {year, month, day};
}

bool CivilDate::isValid() const {
    return month >= 1 && month <= 12 && day >= 1 && day <= daysInMonth(year, month);
}

std::string CivilDate::text() const {
    if (!isValid() || year < 0 || year > 9999) return fmt::format("{:04}-{:02}-{:02}", year, month, day);
    std::string text = "0000-00-00";
    const auto write = [&text](std::size_t last, int number) {
        for (std::size_t i = last; number > 0; --i, number /= 10) text[i] = static_cast<char>('0' + number % 10);
    };
    write(3, year);
    write(6, month);
    write(9, day);
    return text;
}

std::int64_t CivilDate::dayNumber() const {
    const std::int64_t y = month <= 2 ? year - 1 : year;
    const std::int64_t era = floorDivide(y, 400);
    const auto yearOfEra = static_cast<int>(y - era * 400);
    const int dayOfYear = (153 * ((month + 9) % 12) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * daysPerEra + dayOfEra - epochOffset;
}

int CivilDate::weekday() const {
    const std::int64_t remainder = (dayNumber() + 4) % 7;
    return static_cast<int>(remainder < 0 ? remainder + 7 : remainder);
}

CivilDate CivilDate::addingDays(std::int64_t days) const {
    return fromDayNumber(dayNumber() + days);
}

CivilDate CivilDate::addingMonths(int months, std::optional<int> onDay) const {
    const std::int64_t index = static_cast<std::int64_t>(year) * 12 + (month - 1) + months;
    const auto targetYear = static_cast<int>(floorDivide(index, 12));
    const auto targetMonth = static_cast<int>(index - static_cast<std::int64_t>(targetYear) * 12) + 1;
    return {targetYear, targetMonth, std::min(onDay.value_or(day), daysInMonth(targetYear, targetMonth))};
}

CivilDate CivilDate::startOfNextWeek() const {
    const int daysToMonday = (8 - weekday()) % 7;
    return addingDays(daysToMonday == 0 ? 7 : daysToMonday);
}

CivilDate CivilDate::endOfMonth() const {
    return {year, month, daysInMonth(year, month)};
}

int CivilDate::daysInMonth(int year, int month) {
    switch (month) {
        case 2:
            return isLeapYear(year) ? 29 : 28;
        case 4:
        case 6:
        case 9:
        case 11:
            return 30;
        default:
            return 31;
    }
}

}  // namespace parvela
