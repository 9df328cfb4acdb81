#include "QuickAdd/Times.h"

#include "QuickAdd/Patterns.h"

namespace parvela::QuickAdd {

namespace {

std::optional<TimeMatch> twelveHourTime(const ClockTime& time, DayHalf half, std::size_t length) {
    const int minutes = time.minutes.value_or(0);
    if (time.hour < 1 || time.hour > 12 || minutes == noNumber || minutes > 59) return std::nullopt;
    return {{length, time.hour % 12 + (half == DayHalf::afterNoon ? 12 : 0), minutes}};
}

std::optional<TimeMatch> numericTime(const Line& line, std::size_t index) {
    const auto word = line.lower(index);
    if (const auto suffixed = matchSuffixedTime(word)) return twelveHourTime(suffixed->time, suffixed->half, 1);
    const auto time = matchClockTime(word);
    if (!time) return std::nullopt;
    const TermKind next = line.term(index + 1).kind;
    if (next == TermKind::beforeNoon) return twelveHourTime(*time, DayHalf::beforeNoon, 2);
    if (next == TermKind::afterNoon) return twelveHourTime(*time, DayHalf::afterNoon, 2);
    if (!time->minutes || time->hour == noNumber || time->hour > 23) return std::nullopt;
    if (*time->minutes == noNumber || *time->minutes > 59) return std::nullopt;
    return {{1, time->hour, *time->minutes}};
}

}  // namespace

std::string TimeMatch::text() const {
    const auto digit = [](int value) { return static_cast<char>('0' + value); };
    return {digit(hour / 10), digit(hour % 10), ':', digit(minutes / 10), digit(minutes % 10)};
}

std::optional<TimeMatch> recogniseTime(const Line& line, std::size_t index) {
    if (!line.isAvailable(index)) return std::nullopt;
    switch (line.term(index).kind) {
        case TermKind::noon:
            return {{1, 12, 0}};
        case TermKind::midnight:
            return {{1, 0, 0}};
        case TermKind::none:
            break;
        default:
            return std::nullopt;
    }
    const auto word = line.lower(index);
    if (word.empty() || !isAsciiDigit(word.front())) return std::nullopt;
    return numericTime(line, index);
}

}  // namespace parvela::QuickAdd
