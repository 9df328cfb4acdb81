#pragma once

#include <ParvelaKit/QuickAddParser.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace parvela::QuickAdd {

/// An edit: the text between `start` and `oldEnd` became the text between `start` and `newEnd`.
struct TextChange {
    std::size_t start = 0;
    std::size_t oldEnd = 0;
    std::size_t newEnd = 0;
};

/// What one edit changed. After typing, pasting or deleting the caret stands behind the change, which settles where a
/// letter among equal ones was typed.
TextChange changeBetween(std::u16string_view before, std::u16string_view after, std::size_t caret);

/// Moves the ranges with their text. A range grows and shrinks with what is edited inside it, and goes when all of its
/// text was replaced.
void follow(std::vector<QuickAddRange>& ranges, const TextChange& change);

/// Widens the sorted ranges to the words they touch, so that a word which is typed on stays whole. Ranges that meet in
/// a word become one.
void coverWords(std::vector<QuickAddRange>& ranges, std::u16string_view text);

}  // namespace parvela::QuickAdd
