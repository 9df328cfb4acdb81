#pragma once

#include "QuickAdd/Line.h"

#include <ParvelaKit/CivilDate.h>

#include <cstddef>
#include <optional>

namespace parvela::QuickAdd {

struct DateMatch {
    enum class ImpliedTime { none, evening };

    std::size_t length = 0;  ///< in words
    CivilDate date;
    ImpliedTime impliedTime = ImpliedTime::none;
};

/// A date that begins at word `index`, without the words that may lead to it ("due", "on", "by").
std::optional<DateMatch> recogniseDate(const Line& line, std::size_t index, CivilDate today);

/// Date text has four digits for the year.
bool hasDateText(CivilDate date);

}  // namespace parvela::QuickAdd
