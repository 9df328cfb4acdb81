#pragma once

#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/regex.h>

/// What holds for every line, whatever it says.
namespace parvela::properties {

/// A line's title by its definition in regular expressions: slow, and written without a thought for the parser's own
/// way.
class ReferenceTitle {
public:
    static std::string without(const std::vector<QuickAddToken>& tokens, std::u16string_view line) {
        icu::UnicodeString title;
        std::size_t start = 0;
        for (std::size_t i = 0; i <= tokens.size(); ++i) {
            const std::size_t end = i < tokens.size() ? tokens[i].start : line.size();
            icu::UnicodeString gap(line.data() + start, static_cast<std::int32_t>(end - start));
            if (i > 0) {
                title = replaced(uR"(\s+$)", title, u"");
                icu::UnicodeString mark;
                const auto rest = cut(uR"(^\s*([,.;:!?])(?=\s|$))", gap, mark);
                const bool separatorsMeet = found(u"[,;:]$", title) && found(u"[,;:]", mark);
                if (!mark.isEmpty() && (separatorsMeet || title.isEmpty())) gap = rest;
            }
            title += gap;
            title += u' ';
            if (i < tokens.size()) start = tokens[i].end;
        }
        title = replaced(uR"(\s+)", title, u" ");
        title = replaced(uR"(\s+$)", title, u"");
        title = replaced(uR"(\s*[,;:]$)", title, u"");
        title = replaced(uR"(^\s+)", title, u"");
        std::string text;
        title.toUTF8String(text);
        return text;
    }

private:
    static bool found(const char16_t* pattern, const icu::UnicodeString& text) {
        UErrorCode status = U_ZERO_ERROR;
        return icu::RegexMatcher(pattern, text, 0, status).find();
    }

    static icu::UnicodeString replaced(const char16_t* pattern, const icu::UnicodeString& text, const char16_t* by) {
        UErrorCode status = U_ZERO_ERROR;
        return icu::RegexMatcher(pattern, text, 0, status).replaceAll(by, status);
    }

    /// The text without its match, whose first group goes to `mark`; unchanged when there is no match.
    static icu::UnicodeString cut(const char16_t* pattern, const icu::UnicodeString& text, icu::UnicodeString& mark) {
        UErrorCode status = U_ZERO_ERROR;
        icu::RegexMatcher matcher(pattern, text, 0, status);
        if (!matcher.find()) return text;
        mark = matcher.group(1, status);
        return {text, matcher.end(status)};
    }
};

inline std::string withAsciiCaseSwapped(std::string text) {
    for (char& c : text) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) c = static_cast<char>(c ^ 0x20);
    }
    return text;
}

/// What is wrong with the result of parsing the line, or nothing.
inline std::optional<std::string> violation(const std::string& line, const QuickAddContext& context) {
    using Kind = QuickAddToken::Kind;
    const auto result = QuickAdd::parse(line, context);
    const auto& tokens = result.tokens;
    const std::u16string text = toUtf16(line);

    std::size_t previousEnd = 0;
    for (const auto& token : tokens) {
        if (token.start < previousEnd || token.start >= token.end || token.end > text.size())
            return "token out of place";
        if (token.value.empty() && token.kind != Kind::label && token.kind != Kind::assignee)
            return "token without a value";
        previousEnd = token.end;
    }
    if (result.title != ReferenceTitle::without(tokens, text)) return "title is not the line without its tokens";
    if (QuickAdd::parse(line, context) != result) return "not deterministic";
    if (QuickAdd::parse(text, context) != result) return "UTF-8 and UTF-16 differ";

    const auto count = [&](Kind kind) { return std::ranges::count(tokens, kind, &QuickAddToken::kind); };
    const auto only = [&](Kind kind) { return std::ranges::find(tokens, kind, &QuickAddToken::kind); };
    for (const Kind kind : {Kind::priority, Kind::date, Kind::time, Kind::repeat}) {
        if (count(kind) > 1) return "more than one " + std::string(QuickAdd::kindName(kind));
    }
    if ((count(Kind::priority) == 1) != (result.priority != QuickAddPriority::none))
        return "priority without its token";
    if ((count(Kind::repeat) == 1) != result.repeat.has_value()) return "repeat without its token";
    if ((count(Kind::date) == 1 || result.repeat) != result.dueDate.has_value()) return "date from nowhere";
    if (result.dueDate && !CivilDate::parse(*result.dueDate)) return "no such date";
    if (count(Kind::date) == 1 && only(Kind::date)->value != result.dueDate) return "date differs from its token";
    if (count(Kind::time) == 1 && only(Kind::time)->value != result.dueTime) return "time differs from its token";
    if (result.repeat && only(Kind::repeat)->value != result.repeat->ruleString()) return "rule differs from its token";
    for (const auto& [kind, ids] :
         {std::pair(Kind::assignee, result.assigneeIds), std::pair(Kind::label, result.labelIds)}) {
        std::vector<std::string> values;
        for (const auto& token : tokens) {
            if (token.kind == kind) values.push_back(token.value);
        }
        std::vector<std::string> sorted = ids;
        std::ranges::sort(values);
        std::ranges::sort(sorted);
        if (std::ranges::adjacent_find(sorted) != sorted.end()) return "an id twice";
        values.erase(std::ranges::unique(values).begin(), values.end());
        if (values != sorted) return "ids differ from the tokens";
    }

    const auto swapped = QuickAdd::parse(withAsciiCaseSwapped(line), context).tokens;
    const bool isSame = std::ranges::equal(tokens, swapped, [](const QuickAddToken& a, const QuickAddToken& b) {
        return a.start == b.start && a.end == b.end && a.kind == b.kind &&
               (a.kind == Kind::label || a.value == b.value);
    });
    if (!isSame) return "case matters";

    for (const auto& token : tokens) {
        const QuickAddRange literal{token.start, token.end};
        for (const auto& other : QuickAdd::parse(line, context, {&literal, 1}).tokens) {
            if (other.start < literal.end && literal.start < other.end) return "recognised in literal text";
        }
        if (tokens.size() > 50) break;  // enough of a long line
    }
    return std::nullopt;
}

}  // namespace parvela::properties
