#pragma once

#include <string>
#include <string_view>

namespace parvela {

/// Titles come from anywhere and are shown among our own words: on one line, at a length that is quick to lay out.

/// The first `longest` user-perceived characters, followed by "…" when there are more. Line breaks and other control
/// characters become blanks.
std::string shortened(std::string_view title, std::size_t longest);

/// The same, isolated from the text around it: marks of text direction in it end with it (Unicode Standard Annex 9,
/// section 2.4).
std::string shownTitle(std::string_view title, std::size_t longest = 300);

}  // namespace parvela
