#include "QuickAdd/NameKeys.h"

#include "QuickAdd/Characters.h"

#include <algorithm>

namespace parvela::QuickAdd {

namespace {

std::u16string withoutWhiteSpace(std::u16string_view text) {
    std::u16string kept;
    for (const char16_t unit : text) {
        if (!isWhiteSpace(unit)) kept += unit;
    }
    return kept;
}

std::u16string_view firstWord(std::u16string_view trimmedText) {
    std::size_t length = 0;
    while (length < trimmedText.size() && !isWhiteSpace(trimmedText[length])) ++length;
    return trimmedText.substr(0, length);
}

bool isBeginningOfWord(std::u16string_view query, std::u16string_view text) {
    for (std::size_t place = text.find(query); place != std::u16string_view::npos;
         place = text.find(query, place + 1)) {
        if (place == 0 || isWhiteSpace(text[place - 1])) return true;
    }
    return false;
}

bool joinsWords(char16_t unit) {
    return unit == u'_' || unit == u'-' || isWhiteSpace(unit);
}

}  // namespace

std::vector<std::u16string> memberKeys(const QuickAddMember& member) {
    std::vector<std::u16string> keys;
    const auto add = [&keys](std::u16string key) {
        if (!key.empty()) keys.push_back(std::move(key));
    };
    const auto name = utf16(member.name);
    add(folded(firstWord(trimmed(name))));
    add(folded(withoutWhiteSpace(name)));
    if (member.email) add(folded(utf16(std::string_view(*member.email).substr(0, member.email->find('@')))));
    return keys;
}

std::u16string labelKey(std::u16string_view name) {
    return folded(trimmed(name));
}

std::u16string looseLabelKey(std::u16string_view key) {
    std::u16string loose;
    loose.reserve(key.size());
    for (const char16_t unit : key) {
        if (!joinsWords(unit)) {
            loose += unit;
        } else if (!loose.empty() && loose.back() != u' ') {
            loose += u' ';
        }
    }
    if (!loose.empty() && loose.back() == u' ') loose.pop_back();
    return loose;
}

bool isBeginning(std::u16string_view query, const QuickAddMember& member) {
    const auto keys = memberKeys(member);
    const auto begins = [query](std::u16string_view key) { return key.starts_with(query); };
    return std::ranges::any_of(keys, begins) || isBeginningOfWord(query, folded(utf16(member.name)));
}

bool isBeginning(std::u16string_view query, const QuickAddLabel& label) {
    return isBeginningOfWord(query, looseLabelKey(labelKey(utf16(label.name))));
}

std::vector<std::string> memberSpellings(const QuickAddMember& member) {
    const auto name = utf16(member.name);
    std::vector<std::string> spellings{"@" + utf8(firstWord(trimmed(name))), "@" + utf8(withoutWhiteSpace(name))};
    if (member.email) spellings.push_back("@" + member.email->substr(0, member.email->find('@')));
    return spellings;
}

std::vector<std::string> labelSpellings(const QuickAddLabel& label) {
    const auto name = utf8(trimmed(utf16(label.name)));
    std::string joined = name;
    std::ranges::replace(joined, ' ', '_');
    return {"#" + name, "#\"" + name + "\"", "#" + joined};
}

}  // namespace parvela::QuickAdd
