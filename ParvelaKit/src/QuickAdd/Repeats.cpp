#include "QuickAdd/Repeats.h"

#include "QuickAdd/Patterns.h"

#include <algorithm>

namespace parvela::QuickAdd {

namespace {

using Freq = QuickAddRepeat::Freq;
using Anchor = RepeatMatch::Anchor;

/// "every mon, wed and fri"
std::optional<RepeatMatch> weekdaysAfterEvery(const Line& line, std::size_t index) {
    std::vector<int> weekdays;
    std::size_t length = 1;
    for (;;) {
        std::size_t next = length;
        if (length > 1 && line.term(index + next).kind == TermKind::andWord) ++next;
        const Term term = line.term(index + next);
        if (!term.isWeekdayName()) break;
        if (std::ranges::find(weekdays, term.value) == weekdays.end()) weekdays.push_back(term.value);
        length = next + 1;
    }
    if (weekdays.empty()) return std::nullopt;
    return {{length, {Freq::weekly, std::move(weekdays)}, Anchor::given}};
}

/// "every month", "every month on the 22nd"
RepeatMatch monthAfterEvery(const Line& line, std::size_t index) {
    std::size_t length = 2;
    if (line.term(index + length).kind == TermKind::on) {
        ++length;
        if (line.term(index + length).kind == TermKind::the) ++length;
        const auto day = line.isAvailable(index + length) ? matchDayOfMonth(line.lower(index + length)) : std::nullopt;
        if (day && *day >= 1 && *day <= 31) return {length + 1, {Freq::monthly, std::nullopt, day}, Anchor::given};
    }
    return {2, {Freq::monthly}, Anchor::implicit};
}

std::optional<RepeatMatch> afterEvery(const Line& line, std::size_t index) {
    switch (line.term(index + 1).kind) {
        case TermKind::day:
            return {{2, {Freq::daily}}};
        case TermKind::weekday:
        case TermKind::weekdays:
            return {{2, {Freq::weekdays}}};
        case TermKind::week:
            return {{2, {Freq::weekly}, Anchor::implicit}};
        case TermKind::month:
            return monthAfterEvery(line, index);
        default:
            return weekdaysAfterEvery(line, index);
    }
}

bool fallsOn(const QuickAddRepeat& rule, CivilDate date) {
    switch (rule.freq) {
        case Freq::daily:
            return true;
        case Freq::weekdays:
            return date.weekday() >= 1 && date.weekday() <= 5;
        case Freq::weekly:
            return !rule.weekdays || rule.weekdays->empty() || std::ranges::count(*rule.weekdays, date.weekday()) > 0;
        case Freq::monthly:
            return date.day == std::min(rule.monthDay.value_or(1), CivilDate::daysInMonth(date.year, date.month));
    }
    return true;
}

}  // namespace

std::optional<RepeatMatch> recogniseRepeat(const Line& line, std::size_t index) {
    switch (line.term(index).kind) {
        case TermKind::every:
            return afterEvery(line, index);
        case TermKind::daily:
            return {{1, {Freq::daily}}};
        case TermKind::weekdays:
            return {{1, {Freq::weekdays}}};
        case TermKind::weekly:
            return {{1, {Freq::weekly}, Anchor::implicit}};
        case TermKind::monthly:
            return {{1, {Freq::monthly}, Anchor::implicit}};
        default:
            return std::nullopt;
    }
}

QuickAddRepeat anchoredAt(QuickAddRepeat rule, CivilDate date) {
    if (rule.freq == Freq::weekly) rule.weekdays = {date.weekday()};
    if (rule.freq == Freq::monthly) rule.monthDay = date.day;
    return rule;
}

CivilDate firstDate(const QuickAddRepeat& rule, CivilDate today) {
    CivilDate date = today;
    while (!fallsOn(rule, date)) date = date.addingDays(1);  // at most a month ahead
    return date;
}

}  // namespace parvela::QuickAdd
