#include "QuickAdd/Dates.h"

#include "QuickAdd/Patterns.h"

namespace parvela::QuickAdd {

namespace {

constexpr int friday = 5;

std::optional<DateMatch> match(CivilDate date, std::size_t length) {
    return hasDateText(date) ? std::optional<DateMatch>({length, date}) : std::nullopt;
}

int daysUntil(int weekday, CivilDate today) {
    return (weekday - today.weekday() + 7) % 7;
}

CivilDate endOfWeek(CivilDate today) {
    return today.addingDays(daysUntil(friday, today));
}

std::optional<DateMatch> tonight(CivilDate today) {
    auto date = match(today, 1);
    if (date) date->impliedTime = DateMatch::ImpliedTime::evening;
    return date;
}

/// "friday": never today.
std::optional<DateMatch> weekdayAlone(const Line& line, std::size_t index, CivilDate today) {
    const Term term = line.term(index);
    if (term.kind == TermKind::ambiguousWeekdayName) {
        const bool isLed = index > 0 && line[index - 1].term.leadsToDate();
        if (!isLed && index + 1 != line.size()) return std::nullopt;
    }
    const int distance = daysUntil(term.value, today);
    return match(today.addingDays(distance == 0 ? 7 : distance), 1);
}

/// "next friday", "next week", "next month"
std::optional<DateMatch> afterNext(const Line& line, std::size_t index, CivilDate today) {
    const Term term = line.term(index + 1);
    if (term.isWeekdayName()) return match(today.startOfNextWeek().addingDays((term.value + 6) % 7), 2);
    if (term.kind == TermKind::week) return match(today.startOfNextWeek(), 2);
    if (term.kind == TermKind::month) return match(today.addingMonths(1, 1), 2);
    return std::nullopt;
}

/// "this friday", "this week", "this month"
std::optional<DateMatch> afterThis(const Line& line, std::size_t index, CivilDate today) {
    const Term term = line.term(index + 1);
    if (term.isWeekdayName()) return match(today.addingDays(daysUntil(term.value, today)), 2);
    if (term.kind == TermKind::week) return match(endOfWeek(today), 2);
    if (term.kind == TermKind::month) return match(today.endOfMonth(), 2);
    return std::nullopt;
}

/// "end week", "end of the month"
std::optional<DateMatch> afterEnd(const Line& line, std::size_t index, CivilDate today) {
    std::size_t length = 1;
    if (line.term(index + length).kind == TermKind::of) ++length;
    if (line.term(index + length).kind == TermKind::the) ++length;
    const TermKind unit = line.term(index + length).kind;
    if (unit == TermKind::week) return match(endOfWeek(today), length + 1);
    if (unit == TermKind::month) return match(today.endOfMonth(), length + 1);
    return std::nullopt;
}

/// "in 3 days", "in a week"
std::optional<DateMatch> afterIn(const Line& line, std::size_t index, CivilDate today) {
    if (!line.isAvailable(index + 1)) return std::nullopt;
    const Term number = line.term(index + 1);
    const int count =
        number.kind == TermKind::number ? number.value : matchCount(line.lower(index + 1)).value_or(noNumber);
    if (count == noNumber) return std::nullopt;
    switch (line.term(index + 2).kind) {
        case TermKind::day:
        case TermKind::days:
            return match(today.addingDays(count), 3);
        case TermKind::week:
        case TermKind::weeks:
            return match(today.addingDays(std::int64_t{7} * count), 3);
        case TermKind::month:
        case TermKind::months:
            return match(today.addingMonths(count), 3);
        default:
            return std::nullopt;
    }
}

/// Without a year the date lies in today's year, or in the next one when it has passed.
std::optional<DateMatch> dayInYear(int month, int day, std::optional<int> year, CivilDate today, std::size_t length) {
    CivilDate date{year.value_or(today.year), month, day};
    if (!date.isValid()) return std::nullopt;
    if (!year && date < today) {
        ++date.year;
        if (!date.isValid()) return std::nullopt;
    }
    return match(date, length);
}

/// Reads an optional year at word `index`, behind a day and a month that took the `length` words before it.
std::optional<DateMatch> withOptionalYear(const Line& line, std::size_t index, int month, int day, CivilDate today,
                                          std::size_t length) {
    const auto year = line.isAvailable(index) ? matchYear(line.lower(index)) : std::nullopt;
    if (year == noNumber) return std::nullopt;
    return dayInYear(month, day, year, today, year ? length + 1 : length);
}

/// "jun 10", "june 10th 2026"
std::optional<DateMatch> afterMonthName(const Line& line, std::size_t index, CivilDate today) {
    if (!line.isAvailable(index + 1)) return std::nullopt;
    const auto day = matchDayOfMonth(line.lower(index + 1));
    if (!day) return std::nullopt;
    return withOptionalYear(line, index + 2, line.term(index).value, *day, today, 2);
}

/// "10 jun", "10th of june 2026"
std::optional<DateMatch> afterDay(const Line& line, std::size_t index, int day, CivilDate today) {
    std::size_t length = 1;
    if (line.term(index + length).kind == TermKind::of) ++length;
    const Term month = line.term(index + length);
    if (month.kind != TermKind::monthName) return std::nullopt;
    ++length;
    return withOptionalYear(line, index + length, month.value, day, today, length);
}

std::optional<DateMatch> numericDate(std::u16string_view word, CivilDate today) {
    if (const auto iso = matchIsoDate(word)) {
        if (iso->year == noNumber) return std::nullopt;
        return dayInYear(iso->month, iso->day, iso->year, today, 1);
    }
    const auto date = matchMonthAndDay(word);
    if (!date || date->year == noNumber) return std::nullopt;
    switch (date->yearForm) {
        case MonthAndDay::Year::none:
            return dayInYear(date->month, date->day, std::nullopt, today, 1);
        case MonthAndDay::Year::twoDigits:
            return dayInYear(date->month, date->day, 2000 + date->year, today, 1);
        case MonthAndDay::Year::fourDigits:
            return dayInYear(date->month, date->day, date->year, today, 1);
    }
    return std::nullopt;
}

}  // namespace

bool hasDateText(CivilDate date) {
    return date.year >= 0 && date.year <= 9999;
}

std::optional<DateMatch> recogniseDate(const Line& line, std::size_t index, CivilDate today) {
    if (!line.isAvailable(index)) return std::nullopt;
    switch (line.term(index).kind) {
        case TermKind::today:
            return match(today, 1);
        case TermKind::tonight:
            return tonight(today);
        case TermKind::tomorrow:
            return match(today.addingDays(1), 1);
        case TermKind::endOfWeek:
            return match(endOfWeek(today), 1);
        case TermKind::endOfMonth:
            return match(today.endOfMonth(), 1);
        case TermKind::weekdayName:
        case TermKind::ambiguousWeekdayName:
            return weekdayAlone(line, index, today);
        case TermKind::next:
            return afterNext(line, index, today);
        case TermKind::thisWord:
            return afterThis(line, index, today);
        case TermKind::in:
            return afterIn(line, index, today);
        case TermKind::end:
            return afterEnd(line, index, today);
        case TermKind::monthName:
            return afterMonthName(line, index, today);
        case TermKind::none:
            break;
        default:
            return std::nullopt;
    }
    const auto word = line.lower(index);
    if (word.empty() || !isAsciiDigit(word.front())) return std::nullopt;  // another digit in front makes no number
    if (const auto day = matchDayOfMonth(word)) return afterDay(line, index, *day, today);
    return numericDate(word, today);
}

}  // namespace parvela::QuickAdd
