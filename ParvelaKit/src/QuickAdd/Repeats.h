#pragma once

#include "QuickAdd/Line.h"

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/QuickAddRecords.h>

#include <cstddef>
#include <optional>

namespace parvela::QuickAdd {

struct RepeatMatch {
    /// Whether the words name the weekdays of a weekly rule or the day of a monthly one.
    enum class Anchor { given, implicit };

    std::size_t length = 0;  ///< in words
    QuickAddRepeat rule;
    Anchor anchor = Anchor::given;
};

/// A repeat rule that begins at word `index`.
std::optional<RepeatMatch> recogniseRepeat(const Line& line, std::size_t index);

/// The rule with the weekday or the day of `date` as its anchor.
QuickAddRepeat anchoredAt(QuickAddRepeat rule, CivilDate date);

/// The first date on which the rule falls, `today` included. In a month that is too short a monthly rule falls on the
/// last day. A weekly rule without weekdays falls on every day, a monthly one without a day on the first.
CivilDate firstDate(const QuickAddRepeat& rule, CivilDate today);

}  // namespace parvela::QuickAdd
