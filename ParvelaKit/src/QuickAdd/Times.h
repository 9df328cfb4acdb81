#pragma once

#include "QuickAdd/Line.h"

#include <cstddef>
#include <optional>
#include <string>

namespace parvela::QuickAdd {

struct TimeMatch {
    std::size_t length = 0;  ///< in words
    int hour = 0;            ///< 0 … 23
    int minutes = 0;

    /// "HH:MM"
    std::string text() const;
};

/// A time that begins at word `index`, without the words that may lead to it ("due", "at", "by").
std::optional<TimeMatch> recogniseTime(const Line& line, std::size_t index);

}  // namespace parvela::QuickAdd
