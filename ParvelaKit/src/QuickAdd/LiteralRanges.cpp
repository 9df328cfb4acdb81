#include "QuickAdd/LiteralRanges.h"

#include "QuickAdd/Characters.h"

#include <algorithm>

namespace parvela::QuickAdd {

namespace {

QuickAddRange moved(const QuickAddRange& range, const TextChange& change) {
    const auto after = [&](std::size_t place) { return place - change.oldEnd + change.newEnd; };
    if (change.oldEnd <= range.start) return {after(range.start), after(range.end)};
    if (change.start >= range.end) return range;
    if (change.start <= range.start && change.oldEnd >= range.end) return {};
    if (change.start <= range.start) return {change.newEnd, after(range.end)};
    if (change.oldEnd >= range.end) return {range.start, change.start};
    return {range.start, after(range.end)};
}

}  // namespace

TextChange changeBetween(std::u16string_view before, std::u16string_view after, std::size_t caret) {
    const std::size_t longestSuffix = std::min(before.size(), after.size() - std::min(caret, after.size()));
    std::size_t suffix = 0;
    while (suffix < longestSuffix && before[before.size() - 1 - suffix] == after[after.size() - 1 - suffix]) ++suffix;
    const std::size_t longestPrefix = std::min(before.size(), after.size()) - suffix;
    std::size_t prefix = 0;
    while (prefix < longestPrefix && before[prefix] == after[prefix]) ++prefix;
    return {prefix, before.size() - suffix, after.size() - suffix};
}

void follow(std::vector<QuickAddRange>& ranges, const TextChange& change) {
    for (auto& range : ranges) range = moved(range, change);
    std::erase_if(ranges, [](const QuickAddRange& range) { return range.start >= range.end; });
}

void coverWords(std::vector<QuickAddRange>& ranges, std::u16string_view text) {
    std::vector<QuickAddRange> covering;
    for (auto [start, end] : ranges) {
        while (start > 0 && !isWhiteSpace(text[start - 1]) && !isLeadingPunctuation(text[start - 1])) --start;
        while (end < text.size() && !isWhiteSpace(text[end]) && !isTrailingPunctuation(text[end])) ++end;
        if (!covering.empty() && start < covering.back().end) {
            covering.back().end = std::max(covering.back().end, end);
        } else {
            covering.push_back({start, end});
        }
    }
    ranges = std::move(covering);
}

}  // namespace parvela::QuickAdd
