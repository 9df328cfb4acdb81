#pragma once

#include <algorithm>
#include <ranges>

namespace parvela::service {

/// Whether one of the range's values equals `value`; std::ranges::contains is younger than the libraries we build with.
template <std::ranges::input_range Range, class Value>
bool contains(const Range& range, const Value& value) {
    return std::ranges::find(range, value) != std::ranges::end(range);
}

}  // namespace parvela::service
