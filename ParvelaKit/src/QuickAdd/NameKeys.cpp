#include "QuickAdd/NameKeys.h"

#include "QuickAdd/Characters.h"

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

}  // namespace parvela::QuickAdd
