#pragma once

#include <ParvelaKit/QuickAddRecords.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace parvela {

/// A piece of a line, in UTF-16 code units: from `start` to before `end`.
struct QuickAddRange {
    std::size_t start = 0;
    std::size_t end = 0;

    bool operator==(const QuickAddRange&) const = default;
};

namespace QuickAdd {

/// Turns one line of free text into a title and the fields of a task.
///
/// Never fails: what is not recognised stays in the title. The same line and context always give the same result, in
/// time linear in the length of the line. Matching is English and ignores case; names compare by canonical equivalence.
///
/// Every word that a range of `literalRanges` touches is taken as plain text: nothing is recognised in it, and it stays
/// in the title. The ranges may come in any order and overlap.
///
/// Invalid UTF-8 counts as U+FFFD. The line must be shorter than 2³¹ bytes; a longer one throws std::length_error.
QuickAddResult parse(std::string_view line, const QuickAddContext& context,
                     std::span<const QuickAddRange> literalRanges = {});
QuickAddResult parse(std::u16string_view line, const QuickAddContext& context,
                     std::span<const QuickAddRange> literalRanges = {});

}  // namespace QuickAdd

}  // namespace parvela
