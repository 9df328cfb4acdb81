#pragma once

#include <cstddef>
#include <cstdint>

namespace parvela::QuickAdd {

/// What a word of the fixed vocabulary stands for.
enum class TermKind : std::uint8_t {
    none,
    today,
    tonight,
    tomorrow,
    endOfWeek,
    endOfMonth,
    next,
    thisWord,
    in,
    end,
    of,
    the,
    on,
    by,
    at,
    due,
    andWord,
    every,
    daily,
    weekday,
    weekdays,
    weekly,
    monthly,
    day,
    days,
    week,
    weeks,
    month,
    months,
    noon,
    midnight,
    number,                ///< `value` is 1 … 12
    monthName,             ///< `value` is 1 … 12
    weekdayName,           ///< `value` is 0 … 6, Sunday is 0
    ambiguousWeekdayName,  ///< "sun" and "sat", which are other words as well; `value` as for `weekdayName`
    priority,              ///< `value` is the raw value of a QuickAddPriority
    beforeNoon,
    afterNoon,
};

struct Term {
    TermKind kind = TermKind::none;
    std::uint8_t value = 0;

    bool isWeekdayName() const { return kind == TermKind::weekdayName || kind == TermKind::ambiguousWeekdayName; }
    /// After one of these words "sun" and "sat" are weekdays.
    bool leadsToDate() const;
};

/// The term that a lower-case word is, or `none`. At least `readableLength` code units are readable from `lower` on.
Term findTerm(const char16_t* lower, std::size_t length);
inline constexpr std::size_t readableLength = 8;

}  // namespace parvela::QuickAdd
