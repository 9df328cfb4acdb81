#include "Domain/Resolver.h"

#include "Domain/Contains.h"

#include <ParvelaKit/Text.h>

#include <algorithm>
#include <array>
#include <functional>

#include <fmt/format.h>

namespace parvela::service {

namespace {

/// Longer names are cut in error texts: they came from outside.
constexpr std::size_t shownCharacters = 60;

std::string_view shown(std::string_view text) {
    return firstCharacters(text, shownCharacters);
}

std::string folded(std::string_view text) {
    return lowercased(trimmed(text));
}

bool isSpace(char16_t unit) {
    const std::string character = toUtf8(std::u16string_view(&unit, 1));
    return trimmed(character).empty();
}

/// Every run of white space, "_" and "-" becomes one blank.
std::string normalised(std::string_view text) {
    std::u16string result;
    for (const char16_t unit : toUtf16(folded(text))) {
        const bool separator = unit == u'_' || unit == u'-' || isSpace(unit);
        if (!separator) {
            result += unit;
        } else if (!result.ends_with(u' ')) {
            result += u' ';
        }
    }
    return std::string(trimmed(toUtf8(result)));
}

std::string withoutSpaces(std::string_view text) {
    std::u16string result;
    for (const char16_t unit : toUtf16(text)) {
        if (!isSpace(unit)) result += unit;
    }
    return toUtf8(result);
}

std::string firstWord(std::string_view text) {
    std::u16string result;
    for (const char16_t unit : toUtf16(text)) {
        if (isSpace(unit)) break;
        result += unit;
    }
    return toUtf8(result);
}

/// First name, whole name without blanks, e-mail address up to the "@".
std::array<std::string, 3> handles(const Account& person) {
    const std::string name = folded(person.name);
    const std::string email = lowercased(person.email);
    return {firstWord(name), withoutSpaces(name), email.substr(0, email.find('@'))};
}

using PersonTest = std::function<bool(const Account&)>;

std::vector<const Account*> matching(const std::vector<Account>& people, const PersonTest& test) {
    std::vector<const Account*> found;
    for (const Account& person : people) {
        if (test(person)) found.push_back(&person);
    }
    return found;
}

}  // namespace

UnresolvedReference UnresolvedReference::noLabel(std::string_view board, std::string_view name) {
    return {fmt::format("The board “{}” has no label “{}”.", shown(board), shown(name))};
}

UnresolvedReference UnresolvedReference::nobody(std::string_view name) {
    return {fmt::format("No one called “{}” is in this workspace.", shown(name))};
}

UnresolvedReference UnresolvedReference::ambiguous(std::string_view name, std::string_view candidates) {
    return {fmt::format("“{}” matches more than one person: {}.", shown(name), candidates)};
}

UnresolvedReference UnresolvedReference::cannotSee(std::string_view person, std::string_view board) {
    return {fmt::format("{} can't see the private board “{}”.", shown(person), shown(board))};
}

Result<LabelId, UnresolvedReference> resolveLabel(std::string_view text, const BoardRow& board,
                                                  const std::vector<LabelRow>& labels) {
    if (const auto id = LabelId::parse(text)) {
        for (const LabelRow& label : labels) {
            if (label.id == *id) return label.id;
        }
    }
    const std::string name = folded(text);
    const std::string loose = normalised(text);
    for (const LabelRow& label : labels) {
        if (!name.empty() && folded(label.name) == name) return label.id;
    }
    const LabelRow* found = nullptr;
    int hits = 0;
    for (const LabelRow& label : labels) {
        if (!loose.empty() && normalised(label.name) == loose) found = &label, ++hits;
    }
    if (hits != 1) return Failure(UnresolvedReference::noLabel(board.name, trimmed(text)));
    return found->id;
}

Result<PersonId, UnresolvedReference> resolvePerson(std::string_view text, const std::vector<Account>& people) {
    if (const auto id = PersonId::parse(text)) {
        for (const Account& person : people) {
            if (person.id == *id) return person.id;
        }
    }
    std::string_view bare = trimmed(text);
    if (bare.starts_with('@')) bare.remove_prefix(1);
    const std::string name = folded(bare);
    const std::string loose = normalised(bare);
    if (name.empty()) return Failure(UnresolvedReference::nobody(text));

    const std::array<PersonTest, 4> passes = {
        [&](const Account& person) { return lowercased(person.email) == name; },
        [&](const Account& person) { return folded(person.name) == name || normalised(person.name) == loose; },
        [&](const Account& person) { return contains(handles(person), name); },
        [&](const Account& person) {
            if (toUtf16(name).size() < 2) return false;
            return std::ranges::any_of(handles(person),
                                       [&](const std::string& handle) { return handle.starts_with(name); });
        },
    };
    for (const PersonTest& pass : passes) {
        const auto found = matching(people, pass);
        if (found.size() == 1) return found.front()->id;
        if (found.empty()) continue;
        std::string names;
        for (const Account* person : found) names += (names.empty() ? "" : ", ") + person->name;
        return Failure(UnresolvedReference::ambiguous(bare, names));
    }
    return Failure(UnresolvedReference::nobody(bare));
}

}  // namespace parvela::service
