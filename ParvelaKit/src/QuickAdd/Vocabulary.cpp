#include "QuickAdd/Vocabulary.h"

#include <ParvelaKit/QuickAddRecords.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace parvela::QuickAdd {

namespace {

struct Entry {
    std::string_view word;
    Term term;
};

constexpr Term priority(QuickAddPriority value) {
    return {TermKind::priority, static_cast<std::uint8_t>(value)};
}

constexpr Entry entries[] = {
    {"today", {TermKind::today}},
    {"tonight", {TermKind::tonight}},
    {"tomorrow", {TermKind::tomorrow}},
    {"tmrw", {TermKind::tomorrow}},
    {"eow", {TermKind::endOfWeek}},
    {"eom", {TermKind::endOfMonth}},
    {"next", {TermKind::next}},
    {"this", {TermKind::thisWord}},
    {"in", {TermKind::in}},
    {"end", {TermKind::end}},
    {"of", {TermKind::of}},
    {"the", {TermKind::the}},
    {"on", {TermKind::on}},
    {"by", {TermKind::by}},
    {"at", {TermKind::at}},
    {"due", {TermKind::due}},
    {"and", {TermKind::andWord}},

    {"every", {TermKind::every}},
    {"everyday", {TermKind::daily}},
    {"daily", {TermKind::daily}},
    {"weekday", {TermKind::weekday}},
    {"weekdays", {TermKind::weekdays}},
    {"weekly", {TermKind::weekly}},
    {"monthly", {TermKind::monthly}},
    {"day", {TermKind::day}},
    {"days", {TermKind::days}},
    {"week", {TermKind::week}},
    {"weeks", {TermKind::weeks}},
    {"month", {TermKind::month}},
    {"months", {TermKind::months}},

    {"noon", {TermKind::noon}},
    {"midnight", {TermKind::midnight}},
    {"am", {TermKind::beforeNoon}},
    {"a.m", {TermKind::beforeNoon}},
    {"a.m.", {TermKind::beforeNoon}},
    {"pm", {TermKind::afterNoon}},
    {"p.m", {TermKind::afterNoon}},
    {"p.m.", {TermKind::afterNoon}},

    {"a", {TermKind::number, 1}},
    {"an", {TermKind::number, 1}},
    {"one", {TermKind::number, 1}},
    {"two", {TermKind::number, 2}},
    {"three", {TermKind::number, 3}},
    {"four", {TermKind::number, 4}},
    {"five", {TermKind::number, 5}},
    {"six", {TermKind::number, 6}},
    {"seven", {TermKind::number, 7}},
    {"eight", {TermKind::number, 8}},
    {"nine", {TermKind::number, 9}},
    {"ten", {TermKind::number, 10}},
    {"eleven", {TermKind::number, 11}},
    {"twelve", {TermKind::number, 12}},

    {"january", {TermKind::monthName, 1}},
    {"jan", {TermKind::monthName, 1}},
    {"february", {TermKind::monthName, 2}},
    {"feb", {TermKind::monthName, 2}},
    {"march", {TermKind::monthName, 3}},
    {"mar", {TermKind::monthName, 3}},
    {"april", {TermKind::monthName, 4}},
    {"apr", {TermKind::monthName, 4}},
    {"may", {TermKind::monthName, 5}},
    {"june", {TermKind::monthName, 6}},
    {"jun", {TermKind::monthName, 6}},
    {"july", {TermKind::monthName, 7}},
    {"jul", {TermKind::monthName, 7}},
    {"august", {TermKind::monthName, 8}},
    {"aug", {TermKind::monthName, 8}},
    {"september", {TermKind::monthName, 9}},
    {"sep", {TermKind::monthName, 9}},
    {"sept", {TermKind::monthName, 9}},
    {"october", {TermKind::monthName, 10}},
    {"oct", {TermKind::monthName, 10}},
    {"november", {TermKind::monthName, 11}},
    {"nov", {TermKind::monthName, 11}},
    {"december", {TermKind::monthName, 12}},
    {"dec", {TermKind::monthName, 12}},

    {"sunday", {TermKind::weekdayName, 0}},
    {"sun", {TermKind::ambiguousWeekdayName, 0}},
    {"monday", {TermKind::weekdayName, 1}},
    {"mon", {TermKind::weekdayName, 1}},
    {"tuesday", {TermKind::weekdayName, 2}},
    {"tue", {TermKind::weekdayName, 2}},
    {"tues", {TermKind::weekdayName, 2}},
    {"wednesday", {TermKind::weekdayName, 3}},
    {"wed", {TermKind::weekdayName, 3}},
    {"thursday", {TermKind::weekdayName, 4}},
    {"thu", {TermKind::weekdayName, 4}},
    {"thur", {TermKind::weekdayName, 4}},
    {"thurs", {TermKind::weekdayName, 4}},
    {"friday", {TermKind::weekdayName, 5}},
    {"fri", {TermKind::weekdayName, 5}},
    {"saturday", {TermKind::weekdayName, 6}},
    {"sat", {TermKind::ambiguousWeekdayName, 6}},

    {"!urgent", priority(QuickAddPriority::urgent)},
    {"!high", priority(QuickAddPriority::high)},
    {"!medium", priority(QuickAddPriority::medium)},
    {"!med", priority(QuickAddPriority::medium)},
    {"!low", priority(QuickAddPriority::low)},
    {"!1", priority(QuickAddPriority::urgent)},
    {"!2", priority(QuickAddPriority::high)},
    {"!3", priority(QuickAddPriority::medium)},
    {"!4", priority(QuickAddPriority::low)},
    {"p1", priority(QuickAddPriority::urgent)},
    {"p2", priority(QuickAddPriority::high)},
    {"p3", priority(QuickAddPriority::medium)},
    {"p4", priority(QuickAddPriority::low)},
};

// Every word of a line is looked up, so this is the hottest place of the parser: eight letters are taken as two
// integers and found with two multiplications, mostly at the first probe.
constexpr std::size_t packedLength = readableLength;
constexpr std::size_t longestWord = packedLength + 1;  // the ninth letter is kept apart

using Letters = std::array<char16_t, packedLength>;
using Packed = std::array<std::uint64_t, 2>;
static_assert(sizeof(Letters) == sizeof(Packed));

constexpr Packed pack(std::string_view word) {
    Letters letters{};
    std::copy_n(word.begin(), std::min(word.size(), packedLength), letters.begin());
    return std::bit_cast<Packed>(letters);
}

/// By length, what keeps that many letters.
constexpr auto masks = [] {
    std::array<Packed, packedLength + 1> table{};
    for (std::size_t length = 0; length <= packedLength; ++length) {
        Letters letters{};
        std::fill_n(letters.begin(), length, char16_t{0xffff});
        table[length] = std::bit_cast<Packed>(letters);
    }
    return table;
}();

constexpr std::size_t slotCount = 256;

constexpr std::size_t slotOf(const Packed& packed) {
    return static_cast<std::size_t>((packed[0] * 0x9e3779b97f4a7c15U ^ packed[1] * 0xc2b2ae3d27d4eb4fU) >> 56U);
}

struct Slot {
    Packed packed{};
    std::uint8_t length = 0;  // 0 marks a free slot
    char16_t ninth = 0;
    Term term;
};

constexpr auto slots = [] {
    std::array<Slot, slotCount> table{};
    for (const auto& [word, term] : entries) {
        const Packed packed = pack(word);
        std::size_t slot = slotOf(packed);
        while (table[slot].length != 0) slot = (slot + 1) % slotCount;
        const char16_t ninth = word.size() == longestWord ? static_cast<char16_t>(word.back()) : char16_t{0};
        table[slot] = {packed, static_cast<std::uint8_t>(word.size()), ninth, term};
    }
    return table;
}();

}  // namespace

bool Term::leadsToDate() const {
    switch (kind) {
        case TermKind::on:
        case TermKind::by:
        case TermKind::due:
        case TermKind::next:
        case TermKind::thisWord:
        case TermKind::every:
            return true;
        default:
            return false;
    }
}

Term findTerm(const char16_t* lower, std::size_t length) {
    if (length == 0 || length > longestWord) return {};
    Packed packed;
    std::memcpy(&packed, lower, sizeof(packed));
    const Packed& mask = masks[std::min(length, packedLength)];
    packed[0] &= mask[0];
    packed[1] &= mask[1];
    const char16_t ninth = length == longestWord ? lower[packedLength] : char16_t{0};
    for (std::size_t slot = slotOf(packed); slots[slot].length != 0; slot = (slot + 1) % slotCount) {
        const Slot& candidate = slots[slot];
        if (candidate.packed == packed && candidate.length == length && candidate.ninth == ninth) return candidate.term;
    }
    return {};
}

}  // namespace parvela::QuickAdd
