#pragma once

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/QuickAddRecords.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace parvela::QuickAdd {

/// What quick add makes of a line, for a terminal: the line, marks under each recognised piece with what it means, and
/// the task's fields below.
///
///     Write brief tomorrow 9am !high
///                 ^^^^^^^^ ^^^ ^^^^^ priority: High
///                 |        |
///                 |        time: 9 AM
///                 date: Tomorrow
///
///     title     Write brief
///     date      Tomorrow (2025-06-11)
///     time      9 AM (09:00)
///     priority  High
///
/// Tabs become blanks. Characters that have no shape of their own (control characters, marks of text direction) are
/// shown by symbols or as "<U+202E>", so that no text can play tricks with the terminal. Every line ends with a line
/// break.
std::string report(std::string_view line, const QuickAddResult& result, CivilDate today);

/// How many columns of a terminal the text takes, counted by user-perceived characters: two for wide East Asian
/// characters and emoji, none for combining marks. The text holds no control characters.
std::size_t displayWidth(std::string_view text);

}  // namespace parvela::QuickAdd
