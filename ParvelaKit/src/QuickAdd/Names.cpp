#include "QuickAdd/Names.h"

#include "QuickAdd/Characters.h"
#include "QuickAdd/NameKeys.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace parvela::QuickAdd {

namespace {

constexpr std::size_t shortestBeginning = 2;  // of a handle that need not be complete, as typed
constexpr std::size_t costOfFolding = 64;     // against one step of comparing in place

/// How a typed name fits a known one. `unknown` when only folding both can tell.
enum class Fit { none, partial, whole, unknown };

bool isAsciiWhiteSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isJoiner(char16_t unit) {
    return unit == u'_' || unit == u'-' || isWhiteSpace(unit);
}
bool isJoiner(char c) {
    return c == '_' || c == '-' || isAsciiWhiteSpace(c);
}
bool isOutsideAscii(char c) {
    return static_cast<unsigned char>(c) >= 0x80;
}
char16_t lower(char c) {
    return asciiLower(static_cast<unsigned char>(c));
}

/// What a difference means between a typed character, in composed form, and an ASCII character of a known text. With
/// another ASCII character it is final: were a combining mark to follow in the known text, the two would compose to
/// something outside ASCII. A character outside ASCII may still turn out to be such a composition.
Fit fitAtDifference(char16_t typed, std::string_view known) {
    return typed < 0x80 || std::ranges::none_of(known, isOutsideAscii) ? Fit::none : Fit::unknown;
}

/// A handle against the first word of a name and against the name without its blanks, in one walk.
Fit fitOfName(std::u16string_view handle, std::string_view name) {
    std::size_t matched = 0;
    bool isInFirstWord = true;
    for (const char c : name) {
        if (isOutsideAscii(c)) return Fit::unknown;
        if (isAsciiWhiteSpace(c)) {
            if (matched == handle.size() && isInFirstWord) return Fit::whole;
            isInFirstWord = matched == 0;
            continue;
        }
        if (matched == handle.size()) return Fit::partial;
        if (lower(c) != handle[matched]) return fitAtDifference(handle[matched], name);
        ++matched;
    }
    return matched == handle.size() ? Fit::whole : Fit::none;
}

Fit fitOfEmail(std::u16string_view handle, std::string_view email) {
    std::size_t matched = 0;
    for (const char c : email) {
        if (isOutsideAscii(c)) return Fit::unknown;
        if (c == '@') break;
        if (matched == handle.size()) return Fit::partial;
        if (lower(c) != handle[matched]) return fitAtDifference(handle[matched], email);
        ++matched;
    }
    return matched == handle.size() ? Fit::whole : Fit::none;
}

Fit fitOfKeys(std::u16string_view key, const QuickAddMember& member) {
    Fit best = Fit::none;
    for (const auto& candidate : memberKeys(member)) {
        if (candidate == key) return Fit::whole;
        if (candidate.starts_with(key)) best = Fit::partial;
    }
    return best;
}

Fit fitOfKeys(std::u16string_view key, std::u16string_view looseKey, const QuickAddLabel& label) {
    const auto known = labelKey(utf16(label.name));
    if (known == key) return Fit::whole;
    return looseLabelKey(known) == looseKey ? Fit::partial : Fit::none;
}

template <class Text>
bool skipJoiners(const Text& text, std::size_t& position) {
    const std::size_t before = position;
    while (position < text.size() && isJoiner(text[position])) ++position;
    return position > before;
}

/// A name, folded unless it is ASCII, against a label, runs of joiners being equal to each other.
Fit fitOfLabel(std::u16string_view name, std::string_view label) {
    std::size_t inName = 0;
    std::size_t inLabel = 0;
    skipJoiners(name, inName);
    skipJoiners(label, inLabel);
    for (;;) {
        if (inLabel < label.size() && isOutsideAscii(label[inLabel])) return Fit::unknown;
        if (inName == name.size() || inLabel == label.size()) break;
        if (asciiLower(name[inName]) != lower(label[inLabel])) return fitAtDifference(name[inName], label);
        const bool isNameJoined = skipJoiners(name, ++inName);
        const bool isLabelJoined = skipJoiners(label, ++inLabel);
        if (isNameJoined != isLabelJoined && inName < name.size() && inLabel < label.size() &&
            !isOutsideAscii(label[inLabel])) {
            return Fit::none;
        }
    }
    if (inName < name.size() || inLabel < label.size()) return Fit::none;
    while (!label.empty() && isAsciiWhiteSpace(label.front())) label.remove_prefix(1);
    while (!label.empty() && isAsciiWhiteSpace(label.back())) label.remove_suffix(1);
    const bool isSame = std::ranges::equal(name, label, {}, asciiLower, lower);
    return isSame ? Fit::whole : Fit::partial;
}

struct Entry {
    std::u16string key;
    std::size_t index = 0;

    auto operator<=>(const Entry&) const = default;
};

auto firstNotBelow(const std::vector<Entry>& entries, std::u16string_view key) {
    return std::ranges::lower_bound(entries, key, {},
                                    [](const Entry& entry) { return std::u16string_view(entry.key); });
}

}  // namespace

struct MemberSearch::Index {
    std::vector<Entry> entries;

    explicit Index(std::span<const QuickAddMember> members) {
        for (std::size_t i = 0; i < members.size(); ++i) {
            for (auto& key : memberKeys(members[i])) entries.push_back({std::move(key), i});
        }
        std::ranges::sort(entries);
    }

    enum class Count { none, one, several };

    /// How many members, and which one, have keys from `entry` on that fit. A member has few keys, so few steps tell.
    template <class Iterator, class Predicate>
    std::pair<Count, std::size_t> count(Iterator entry, Predicate fits) const {
        if (entry == entries.end() || !fits(entry->key)) return {Count::none, 0};
        const std::size_t member = entry->index;
        while (++entry != entries.end() && fits(entry->key)) {
            if (entry->index != member) return {Count::several, member};
        }
        return {Count::one, member};
    }
};

MemberSearch::MemberSearch(std::span<const QuickAddMember> members) : members_(members), budget_(members.size()) {
}
MemberSearch::~MemberSearch() = default;

const QuickAddMember* MemberSearch::find(std::u16string_view handle) {
    if (handle.empty()) return nullptr;
    std::u16string composed;
    std::u16string_view key = handle;
    if (!isAscii(handle)) key = composed = folded(handle);
    if (!index_ && budget_.isSpent()) index_ = std::make_unique<const Index>(members_);
    if (!index_) return findInPlace(key, handle.size());

    using Count = Index::Count;
    const auto entry = firstNotBelow(index_->entries, key);
    auto [count, member] = index_->count(entry, [key](const auto& candidate) { return candidate == key; });
    if (count == Count::none && handle.size() >= shortestBeginning) {
        std::tie(count, member) =
            index_->count(entry, [key](const auto& candidate) { return candidate.starts_with(key); });
    }
    return count == Count::one ? &members_[member] : nullptr;
}

const QuickAddMember* MemberSearch::findInPlace(std::u16string_view key, std::size_t handleLength) {
    const QuickAddMember* whole = nullptr;
    const QuickAddMember* partial = nullptr;
    std::size_t wholes = 0;
    std::size_t partials = 0;
    for (const auto& member : members_) {
        Fit fit = fitOfName(key, member.name);
        if (member.email && fit != Fit::unknown && fit != Fit::whole) {
            const Fit emailFit = fitOfEmail(key, *member.email);
            if (emailFit != Fit::none) fit = emailFit;
        }
        if (fit == Fit::unknown) {
            fit = fitOfKeys(key, member);
            budget_.spend(costOfFolding);
        }
        if (fit == Fit::whole && wholes++ == 0) whole = &member;
        if (fit == Fit::partial && partials++ == 0) partial = &member;
    }
    budget_.spend(members_.size());
    if (wholes > 0) return wholes == 1 ? whole : nullptr;
    return partials == 1 && handleLength >= shortestBeginning ? partial : nullptr;
}

struct LabelSearch::Index {
    std::vector<Entry> names;
    std::vector<Entry> looseNames;

    explicit Index(std::span<const QuickAddLabel> labels) {
        for (std::size_t i = 0; i < labels.size(); ++i) {
            names.push_back({labelKey(utf16(labels[i].name)), i});
            looseNames.push_back({looseLabelKey(names.back().key), i});
        }
        std::ranges::sort(names);
        std::ranges::sort(looseNames);
    }
};

LabelSearch::LabelSearch(std::span<const QuickAddLabel> labels) : labels_(labels), budget_(labels.size()) {
}
LabelSearch::~LabelSearch() = default;

const QuickAddLabel* LabelSearch::find(std::u16string_view name) {
    if (!index_ && budget_.isSpent()) index_ = std::make_unique<const Index>(labels_);
    if (!index_) return findInPlace(name);

    const auto key = labelKey(name);
    const auto exact = firstNotBelow(index_->names, key);
    if (exact != index_->names.end() && exact->key == key) return &labels_[exact->index];
    const auto looseKey = looseLabelKey(key);
    const auto loose = firstNotBelow(index_->looseNames, looseKey);
    if (loose == index_->looseNames.end() || loose->key != looseKey) return nullptr;
    const auto next = loose + 1;
    const bool isAmbiguous = next != index_->looseNames.end() && next->key == looseKey;
    return isAmbiguous ? nullptr : &labels_[loose->index];
}

const QuickAddLabel* LabelSearch::findInPlace(std::u16string_view name) {
    std::u16string key;
    std::u16string looseKey;
    if (!isAscii(name)) name = key = labelKey(name);
    const QuickAddLabel* loose = nullptr;
    std::size_t looseFits = 0;
    budget_.spend(labels_.size());
    for (const auto& label : labels_) {
        Fit fit = fitOfLabel(name, label.name);
        if (fit == Fit::unknown) {
            budget_.spend(costOfFolding);
            if (key.empty()) key = labelKey(name);
            if (looseKey.empty()) looseKey = looseLabelKey(key);
            fit = fitOfKeys(key, looseKey, label);
        }
        if (fit == Fit::whole) return &label;
        if (fit == Fit::partial && looseFits++ == 0) loose = &label;
    }
    return looseFits == 1 ? loose : nullptr;
}

}  // namespace parvela::QuickAdd
