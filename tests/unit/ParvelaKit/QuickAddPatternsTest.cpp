#include "QuickAdd/Line.h"
#include "QuickAdd/Patterns.h"
#include "QuickAdd/QuotedLabels.h"
#include "QuickAdd/Vocabulary.h"
#include "support/QuickAddSamples.h"

#include <ParvelaKit/Text.h>

#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

// The matchers are written by hand for speed. What they must find is defined by regular expressions, so here ICU's
// engine runs those expressions and the two are compared.

namespace parvela::QuickAdd {
namespace {

using Groups = std::optional<std::vector<std::optional<std::u16string>>>;

class Expression {
public:
    explicit Expression(const char16_t* pattern) : matcher_(pattern, 0, status_) {
        EXPECT_TRUE(U_SUCCESS(status_)) << toUtf8(pattern);
    }

    /// The groups of the first match, the whole of it first.
    Groups match(std::u16string_view text) {
        const icu::UnicodeString input(false, text.data(), static_cast<std::int32_t>(text.size()));
        matcher_.reset(input);
        if (!matcher_.find()) return std::nullopt;
        std::vector<std::optional<std::u16string>> groups;
        for (std::int32_t i = 0; i <= matcher_.groupCount(); ++i) {
            const bool hasGroup = matcher_.start(i, status_) >= 0;
            const auto group = matcher_.group(i, status_);
            groups.push_back(
                hasGroup ? std::optional(std::u16string(group.getBuffer(), static_cast<std::size_t>(group.length())))
                         : std::nullopt);
        }
        return groups;
    }

    /// Start and end of every match.
    std::vector<std::pair<std::size_t, std::size_t>> matches(std::u16string_view text) {
        const icu::UnicodeString input(false, text.data(), static_cast<std::int32_t>(text.size()));
        matcher_.reset(input);
        std::vector<std::pair<std::size_t, std::size_t>> ranges;
        while (matcher_.find()) ranges.emplace_back(matcher_.start(status_), matcher_.end(status_));
        return ranges;
    }

private:
    UErrorCode status_ = U_ZERO_ERROR;
    icu::RegexMatcher matcher_;
};

Term termOf(std::u16string word) {
    const std::size_t length = word.size();
    word.resize(length + readableLength);
    return findTerm(word.data(), length);
}

/// The number of a group: `noNumber` with a digit outside ASCII.
int number(const std::optional<std::u16string>& group) {
    int value = 0;
    for (const char16_t unit : *group) {
        if (unit < u'0' || unit > u'9') return noNumber;
        value = value * 10 + (unit - u'0');
    }
    return value;
}

std::optional<int> optionalNumber(const std::optional<std::u16string>& group) {
    return group ? std::optional(number(group)) : std::nullopt;
}

/// Words of the shapes that are looked for, spoiled a little, and words of random pieces.
std::u16string generatedWord(samples::LineGenerator& random) {
    static const std::vector<std::u16string> shapes{
        u"#",        u"##",      u"###",       u"20##", u"#st",   u"##th",       u"####-##-##",
        u"#/#",      u"##/#/##", u"#/##/####", u"#:##", u"##:##", u"#am",        u"##:##p.m",
        u"#:##a.m.", u"am",      u"p.m.",      u"p.m",  u"x#-y",  u"\u00e9_x.'", u""};
    static const std::vector<std::u16string> digits{u"0", u"1",      u"2",      u"3",      u"5",          u"7",
                                                    u"9", u"\u0665", u"\u0967", u"\uff11", u"\U0001d7d9", u"\u00b2"};
    static const std::vector<std::u16string> pieces{
        u"1", u"12",     u"20",     u"2026",   u"\u0665",     u"\u00b2",     u"\u2167", u"\u0bf0", u"/",     u"-",
        u":", u".",      u"am",     u"p",      u"m",          u"st",         u"rd",     u"th",     u"_",     u"'",
        u"x", u"\u00e9", u"\u00df", u"\u0301", u"\U00010400", u"\U0001f600", u"\u2019", u"@",      u"\u00aa"};
    std::u16string word;
    for (const char16_t unit : random.one(shapes)) {
        if (random.chance(40)) word += random.one(pieces);
        if (!random.chance(40))
            word += unit == u'#' ? random.chance(8) ? random.one(digits) : std::u16string(1, u'1')
                                 : std::u16string(1, unit);
    }
    while (word.empty() || random.chance(6)) word += random.one(pieces);
    return word;
}

TEST(QuickAddPatterns, agreeWithTheirRegularExpressions) {
    Expression day(uR"(^(\d{1,2})(?:st|nd|rd|th)?$)");
    Expression year(uR"(^(20\d\d)$)");
    Expression count(uR"(^\d{1,3}$)");
    Expression isoDate(uR"(^(\d{4})-(\d{2})-(\d{2})$)");
    Expression monthAndDay(uR"(^(\d{1,2})/(\d{1,2})(?:/(\d{2}|\d{4}))?$)");
    Expression suffixedTime(uR"(^(\d{1,2})(?::(\d{2}))?(am|pm|a\.m\.?|p\.m\.?)$)");
    Expression clockTime(uR"(^(\d{1,2})(?::(\d{2}))?$)");
    Expression dayHalf(uR"(^(am|pm|a\.m\.?|p\.m\.?)$)");
    Expression handle(uR"(^[\p{L}\p{N}][\p{L}\p{N}._'-]*$)");
    Expression digits(uR"(^\d+$)");

    samples::LineGenerator random(7);
    std::map<std::string, int> hits;
    for (int i = 0; i < 60000; ++i) {
        const std::u16string word = generatedWord(random);
        const std::string shown = toUtf8(word);

        const auto expect = [&](const char* name, const Groups& groups, auto actual, auto expected) {
            hits[name] += groups.has_value();
            EXPECT_EQ(actual.has_value(), groups.has_value()) << name << " " << shown;
            if (actual && groups) EXPECT_TRUE(expected(*groups, *actual)) << name << " " << shown;
        };
        expect("day", day.match(word), matchDayOfMonth(word), [](auto& g, int value) { return number(g[1]) == value; });
        expect("year", year.match(word), matchYear(word), [](auto& g, int value) { return number(g[1]) == value; });
        expect("count", count.match(word), matchCount(word), [](auto& g, int value) { return number(g[0]) == value; });
        expect("iso", isoDate.match(word), matchIsoDate(word), [](auto& g, const NumericDate& date) {
            return number(g[1]) == date.year && number(g[2]) == date.month && number(g[3]) == date.day;
        });
        expect("m/d", monthAndDay.match(word), matchMonthAndDay(word), [](auto& g, const MonthAndDay& date) {
            using Year = MonthAndDay::Year;
            const auto length = g[3] ? u_countChar32(g[3]->data(), static_cast<std::int32_t>(g[3]->size())) : 0;
            const Year form = length == 0 ? Year::none : length == 2 ? Year::twoDigits : Year::fourDigits;
            return number(g[1]) == date.month && number(g[2]) == date.day && form == date.yearForm &&
                   (!g[3] || number(g[3]) == date.year);
        });
        expect("5pm", suffixedTime.match(word), matchSuffixedTime(word), [](auto& g, const SuffixedTime& match) {
            return number(g[1]) == match.time.hour && optionalNumber(g[2]) == match.time.minutes &&
                   (g[3]->front() == u'p') == (match.half == DayHalf::afterNoon);
        });
        expect("5:30", clockTime.match(word), matchClockTime(word), [](auto& g, const ClockTime& time) {
            return number(g[1]) == time.hour && optionalNumber(g[2]) == time.minutes;
        });
        const TermKind kind = termOf(word).kind;
        const bool isDayHalf = kind == TermKind::beforeNoon || kind == TermKind::afterNoon;
        expect("am", dayHalf.match(word), isDayHalf ? std::optional(kind) : std::nullopt,
               [](auto& g, TermKind half) { return (g[1]->front() == u'p') == (half == TermKind::afterNoon); });
        const auto anything = [](auto&, bool) { return true; };
        expect("handle", handle.match(word), isHandle(word) ? std::optional(true) : std::nullopt, anything);
        expect("digits", digits.match(word), isAllDigits(word) ? std::optional(true) : std::nullopt, anything);
    }
    for (const auto& [name, found] : hits) EXPECT_GT(found, 500) << name << " was hardly met";
}

TEST(QuickAddPatterns, cutLinesAsTheirRegularExpressionsDo) {
    Expression pieces(uR"(\S+)");
    Expression quoted(u"#[\"\u201c]([^\"\u201d]+)[\"\u201d]");
    samples::LineGenerator random(8);
    std::size_t quotedCount = 0;
    for (int i = 0; i < 2000; ++i) {
        const std::u16string text = toUtf16(random.wildLine(1 + static_cast<std::size_t>(i) % 12));
        const Line line(text);
        const auto expectedPieces = pieces.matches(text);
        ASSERT_EQ(line.size(), expectedPieces.size()) << toUtf8(text);
        for (std::size_t word = 0; word < line.size(); ++word) {
            EXPECT_EQ(line[word].rawEnd, expectedPieces[word].second);
            EXPECT_GE(line[word].start, expectedPieces[word].first);
            const auto core = text.substr(line[word].start, line[word].end - line[word].start);
            EXPECT_EQ(toUtf8(line.lower(word)), parvela::lowercased(toUtf8(core)));
        }
        std::vector<std::pair<std::size_t, std::size_t>> found;
        QuotedLabels labels(text);
        while (const auto label = labels.next()) found.emplace_back(label->start, label->end);
        EXPECT_EQ(found, quoted.matches(text)) << toUtf8(text);
        quotedCount += found.size();
    }
    EXPECT_GT(quotedCount, 200U);
}

TEST(QuickAddPatterns, onlyTheDottedICanGrowWhenLowerCased) {
    // Lines without it are lower-cased in one go, their offsets kept.
    for (UChar32 character = 0x80; character <= 0x10ffff; ++character) {
        if (character == 0x130) continue;
        const icu::UnicodeString text(character);
        ASSERT_EQ(icu::UnicodeString(text).toLower(icu::Locale::getRoot()).length(), text.length()) << character;
    }
}

TEST(QuickAddPatterns, aWordWithANulIsNoTerm) {
    EXPECT_EQ(termOf({u"a\0", 2}).kind, TermKind::none);
    EXPECT_EQ(termOf({u"tomorrow\0", 9}).kind, TermKind::none);
    EXPECT_EQ(termOf(u"wednesdax").kind, TermKind::none);
    EXPECT_EQ(termOf(u"wednesda").kind, TermKind::none);
}

}  // namespace
}  // namespace parvela::QuickAdd
