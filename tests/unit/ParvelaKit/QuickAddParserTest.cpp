#include "support/QuickAddSamples.h"

#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/Text.h>

namespace parvela {
namespace {

const CivilDate tuesday{2025, 6, 10};

QuickAddContext on(CivilDate today) {
    return {.today = today};
}

/// The line with its tokens in brackets: "call [date:tomorrow]".
std::string marked(std::string_view line, const QuickAddResult& result) {
    const std::u16string text = toUtf16(line);
    std::string marks;
    std::size_t position = 0;
    const auto piece = [&](std::size_t end) {
        marks += toUtf8(std::u16string_view(text).substr(position, end - position));
        position = end;
    };
    for (const auto& token : result.tokens) {
        piece(token.start);
        marks += "[" + std::string(QuickAdd::kindName(token.kind)) + ":";
        piece(token.end);
        marks += "]";
    }
    piece(text.size());
    return marks;
}

/// All that was found, in one text: "call | 2025-06-11 09:30 !high @u-sam #l-bug weekly:1".
std::string summary(const QuickAddResult& result) {
    std::string text = result.title.empty() ? "|" : result.title + " |";
    if (result.dueDate) text += " " + *result.dueDate;
    if (result.dueTime) text += " " + *result.dueTime;
    if (result.priority != QuickAddPriority::none) text += " !" + std::string(QuickAdd::apiString(result.priority));
    for (const auto& id : result.assigneeIds) text += " @" + id;
    for (const auto& id : result.labelIds) text += " #" + id;
    if (result.repeat) text += " " + result.repeat->ruleString();
    return text;
}

struct LineCase {
    std::string line;
    std::string marks;
    std::string meaning;
};

struct LinesIn {
    QuickAddContext context;

    void mean(const std::vector<LineCase>& cases) const {
        for (const auto& [line, marks, meaning] : cases) {
            const auto result = QuickAdd::parse(line, context);
            EXPECT_EQ(marked(line, result), marks);
            EXPECT_EQ(summary(result), meaning) << line;
        }
    }
};

/// Each phrase, with a word before and after it, must be the one token of its line and vanish from the title.
void expectPhrases(CivilDate today, QuickAddToken::Kind kind, std::string_view value,
                   const std::vector<std::string>& phrases) {
    for (const auto& phrase : phrases) {
        const auto result = QuickAdd::parse("ship " + phrase + " it", on(today));
        ASSERT_EQ(result.tokens.size(), 1U) << phrase;
        EXPECT_EQ(result.tokens[0].kind, kind) << phrase;
        EXPECT_EQ(result.tokens[0].value, value) << phrase;
        EXPECT_EQ(result.tokens[0].start, 5U) << phrase;
        EXPECT_EQ(result.tokens[0].end, 5U + toUtf16(phrase).size()) << phrase;
        EXPECT_EQ(result.title, "ship it") << phrase;
    }
}

/// Nothing is recognised in the phrases.
void expectPlain(CivilDate today, const std::vector<std::string>& phrases) {
    for (const auto& phrase : phrases) {
        const auto result = QuickAdd::parse(phrase, on(today));
        EXPECT_EQ(marked(phrase, result), phrase);
        EXPECT_EQ(result.title, phrase);
    }
}

TEST(QuickAddParser, findsDates) {
    const struct {
        const char* value;
        std::vector<std::string> phrases;
        CivilDate today = tuesday;
    } cases[] = {
        {"2025-06-10",
         {"today", "TODAY", "due today", "by today", "due on today", "this tuesday", "in 0 days", "jun 10", "6/10",
          "10 june", "10th of june", "2025-06-10"}},
        {"2025-06-11",
         {"tomorrow", "tmrw", "in a day", "in 1 day", "in one days", "due by tomorrow", "on wed", "this wed", "06/11"}},
        {"2025-06-13",
         {"friday", "Fri", "on friday", "by fri", "due fri", "due on friday", "eow", "this week", "end week",
          "end of week", "end the week", "end of the week", "this fri", "in three days", "jun 13th", "13th of jun",
          "june 13rd"}},
        {"2025-06-15", {"sunday", "on sun", "due sun", "this sun"}},
        {"2025-06-14", {"saturday", "by sat", "in 4 days"}},
        {"2025-06-17", {"tuesday", "tues", "tue", "in a week", "in 7 days", "next tue"}},
        {"2025-06-16", {"monday", "mon", "next week", "next monday", "on next week"}},
        {"2025-06-22", {"next sun", "next sunday"}},
        {"2025-06-30", {"eom", "this month", "end month", "end of month", "end of the month", "end the month", "6/30"}},
        {"2025-07-01", {"next month", "july 1", "1 jul", "7/1"}},
        {"2025-07-10", {"in a month", "in 1 months", "in 30 days"}},
        {"2025-06-24", {"in two weeks", "in 2 week", "in 14 days"}},
        {"2028-03-05", {"in 999 days"}},
        {"2026-06-09",
         {"jun 9", "9th june", "6/9", "6/9/26", "06/09/2026", "2026-06-09", "jun 9 2026", "9 of jun 2026"}},
        {"2024-06-09", {"jun 9 2024", "6/9/24", "6/9/2024", "2024-06-09"}},

        {"2025-06-20", {"friday", "next friday", "in a week"}, {2025, 6, 13}},
        {"2025-06-13", {"this friday", "eow", "this week", "today"}, {2025, 6, 13}},
        {"2025-06-20", {"eow", "next fri"}, {2025, 6, 14}},
        {"2025-06-23", {"next week", "next monday", "in a week", "monday"}, {2025, 6, 16}},
        {"2025-06-16", {"next week", "tomorrow"}, {2025, 6, 15}},
        {"2025-02-01", {"next month"}, {2025, 1, 31}},
        {"2025-02-28", {"in a month"}, {2025, 1, 31}},
        {"2024-02-29", {"in a month", "feb 29", "2/29"}, {2024, 1, 31}},
        {"2026-01-31", {"in twelve months", "jan 31 2026"}, {2025, 1, 31}},
        {"2028-02-29", {"feb 29", "2/29"}, {2028, 2, 29}},
    };
    for (const auto& [value, phrases, today] : cases) expectPhrases(today, QuickAddToken::Kind::date, value, phrases);
}

TEST(QuickAddParser, knowsEveryMonthAndWeekdayName) {
    const std::vector<std::string> months{
        "january jan", "february feb", "march mar",          "april apr",   "may",          "june jun",
        "july jul",    "august aug",   "september sep sept", "october oct", "november nov", "december dec"};
    for (std::size_t month = 0; month < months.size(); ++month) {
        for (const auto& name : samples::words(months[month])) {
            const auto date = CivilDate{2027, static_cast<int>(month) + 1, 5}.text();
            expectPhrases(tuesday, QuickAddToken::Kind::date, date, {name + " 5 2027", "5 " + name + " 2027"});
        }
    }
    const std::vector<std::string> weekdays{
        "sunday sun", "monday mon",  "tuesday tue tues", "wednesday wed", "thursday thu thur thurs",
        "friday fri", "saturday sat"};
    const CivilDate sunday{2025, 6, 8};
    for (std::size_t weekday = 0; weekday < weekdays.size(); ++weekday) {
        for (const auto& name : samples::words(weekdays[weekday])) {
            const auto date = sunday.addingDays(static_cast<std::int64_t>(weekday));
            expectPhrases(sunday, QuickAddToken::Kind::date, date.text(), {"this " + name});
            expectPhrases(sunday, QuickAddToken::Kind::repeat, "weekly:" + std::to_string(weekday), {"every " + name});
        }
    }
    const auto numbers = samples::words("a two three four five six seven eight nine ten eleven twelve an one");
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const int count = i < 12 ? static_cast<int>(i) + 1 : 1;
        expectPhrases(sunday, QuickAddToken::Kind::date, sunday.addingDays(count).text(),
                      {"in " + numbers[i] + " days"});
    }
}

TEST(QuickAddParser, leavesWhatIsNoDate) {
    expectPlain(tuesday, {"sat with Sam", "sun cream", "weekday plans", "in five apples", "in 1000 days",
                          "in days",      "next year", "this",          "end of the day", "end",
                          "may",          "march on",  "jun",           "june 31",        "31 june",
                          "feb 29",       "2/29",      "2025-02-30",    "2/30",           "13/1",
                          "0/1",          "1/0",       "6/10/025",      "6/10/2",         "2025-6-1",
                          "25-06-01",     "jun 10th2", "jun 100",       "feb 29 2026",    "6/31/26",
                          "10 of",        "jun of 10", "todays",        "tomorrows",      "on",
                          "due",          "by",        "due on"});
    expectPlain({2024, 3, 1}, {"feb 29", "2/29"});  // passed, and next year has no such day
    expectPlain({2027, 3, 1}, {"feb 29", "2/29"});  // not in this year
    expectPlain(tuesday, {"jun 1\u0660", "\u0661\u0660 jun", "in \u0663 days", "202\u0665-06-10", "6/1\u0660",
                          "jun 12 20\u0662\u0666"});
    expectPlain({9999, 12, 31}, {"tomorrow", "next month", "jan 1"});
    expectPlain({12000, 1, 1}, {"today", "tonight"});
    EXPECT_EQ(QuickAdd::parse("weekly tonight", on({12000, 1, 1})).dueDate, std::nullopt);
}

TEST(QuickAddParser, findsTimes) {
    const std::vector<std::pair<const char*, std::vector<std::string>>> cases{
        {"00:00", {"midnight", "12am", "12 am", "12:00am", "0:00", "00:00", "at midnight"}},
        {"12:00", {"noon", "12pm", "12 p.m", "12:00", "12:00 PM", "by noon", "due at noon"}},
        {"05:00",
         {"5am", "5 am", "5a.m", "05am", "5:00", "05:00", "at 5am", "by 5am", "due 5am", "due by 5 am", "due at 5a.m"}},
        {"21:30", {"9:30pm", "9:30 pm", "21:30", "09:30PM", "9:30p.m", "at 21:30"}},
        {"23:59", {"23:59", "11:59pm"}},
        {"13:05", {"1:05pm", "13:05", "01:05 pm"}},
    };
    for (const auto& [value, phrases] : cases) expectPhrases(tuesday, QuickAddToken::Kind::time, value, phrases);

    expectPlain(tuesday,
                {"5",           "at 5", "13pm",   "0am",    "13 pm",   "0:30 am", "24:00",    "9:60",
                 "9:60am",      "9:5",  "9:305",  "123:00", "am",      "9::30",   "13:00 pm", "5p",
                 "5pmm",        "5xm",  "5 am.m", "5a..m",  "noonish", "on 5pm5", "\u0665pm", "\u0665:\u0663\u0660",
                 "5:3\u0660 pm"});
    LinesIn{on(tuesday)}.mean({
        {"doctor at 7 a.m. sharp", "doctor [time:at 7 a.m]. sharp", "doctor. sharp | 07:00"},
        {"on 5pm", "on [time:5pm]", "on | 17:00"},
        {"9am 10am", "[time:9am] 10am", "10am | 09:00"},
        {"at at 9am", "at [time:at 9am]", "at | 09:00"},
    });
}

TEST(QuickAddParser, takesTheFirstDateAndTheFirstExplicitTime) {
    LinesIn{on(tuesday)}.mean({
        {"tomorrow friday", "[date:tomorrow] friday", "friday | 2025-06-11"},
        {"tonight", "[date:tonight]", "| 2025-06-10 18:00"},
        {"drinks tonight at 9pm", "drinks [date:tonight] [time:at 9pm]", "drinks | 2025-06-10 21:00"},
        {"9pm tonight", "[time:9pm] [date:tonight]", "| 2025-06-10 21:00"},
        {"tonight 9pm 10pm", "[date:tonight] [time:9pm] 10pm", "10pm | 2025-06-10 21:00"},
        {"tomorrow tonight", "[date:tomorrow] tonight", "tonight | 2025-06-11"},
        {"due due tomorrow", "due [date:due tomorrow]", "due | 2025-06-11"},
        {"due on by friday", "due on [date:by friday]", "due on | 2025-06-13"},
        {"5 jun 10 jun", "[date:5 jun] 10 jun", "10 jun | 2026-06-05"},
        {"by 5pm on friday", "[time:by 5pm] [date:on friday]", "| 2025-06-13 17:00"},
    });
}

TEST(QuickAddParser, takesShortWeekendNamesOnlyWhereTheyMeanDays) {
    LinesIn{on(tuesday)}.mean({
        {"in sat with Sam", "in sat with Sam", "in sat with Sam |"},
        {"call Sam sat", "call Sam [date:sat]", "call Sam | 2025-06-14"},
        {"sun", "[date:sun]", "| 2025-06-15"},
        {"sun!", "[date:sun]!", "| 2025-06-15"},
        {"sun !", "sun !", "sun ! |"},
        {"sun \u2014", "sun \u2014", "sun \u2014 |"},
        {"on sun chairs", "[date:on sun] chairs", "chairs | 2025-06-15"},
        {"weekly by sat and sun", "[repeat:weekly] [date:by sat] and sun", "and sun | 2025-06-14 weekly:6"},
        {"every sun sat down", "[repeat:every sun sat] down", "down | 2025-06-14 weekly:0,6"},
        {"every mon due sun x", "[repeat:every mon] [date:due sun] x", "x | 2025-06-15 weekly:1"},
    });
}

TEST(QuickAddParser, findsRepeatRules) {
    const std::vector<std::pair<const char*, std::vector<std::string>>> cases{
        {"daily", {"daily", "everyday", "every day", "Every Day"}},
        {"weekdays", {"weekdays", "every weekday", "every weekdays"}},
        {"weekly:", {"weekly", "every week"}},
        {"weekly:1,3,5",
         {"every mon wed fri", "every mon, wed and fri", "every monday and wednesday and friday",
          "every mon wed mon fri"}},
        {"weekly:4,0", {"every thurs and sun", "every thursday sunday"}},
        {"monthly:1", {"monthly", "every month", "every month on the 1st", "every month on 1"}},
        {"monthly:22", {"every month on the 22nd", "every month on the 22", "every month on 22nd"}},
        {"monthly:31", {"every month on the 31st"}},
    };
    for (const auto& [value, phrases] : cases) expectPhrases(tuesday, QuickAddToken::Kind::repeat, value, phrases);

    expectPlain(tuesday, {"weekday", "every", "every one", "every days", "every and", "week", "month"});
    LinesIn{on(tuesday)}.mean({
        {"every mon and call", "[repeat:every mon] and call", "and call | 2025-06-16 weekly:1"},
        {"every month on the 32nd", "[repeat:every month] on the 32nd", "on the 32nd | 2025-07-01 monthly:1"},
        {"every month on the 0", "[repeat:every month] on the 0", "on the 0 | 2025-07-01 monthly:1"},
        {"every month on the 1\u0660", "[repeat:every month] on the 1\u0660", "on the 1\u0660 | 2025-07-01 monthly:1"},
        {"daily weekly", "[repeat:daily] weekly", "weekly | 2025-06-10 daily"},
        {"every other week", "every other week", "every other week |"},
    });
}

TEST(QuickAddParser, givesRepeatRulesTheirAnchorAndFirstDate) {
    const struct {
        CivilDate today;
        const char* line;
        const char* meaning;
        const char* display;
    } cases[] = {
        {tuesday, "weekly on monday", "| 2025-06-16 weekly:1", "Every Mon"},
        {tuesday, "friday every week", "| 2025-06-13 weekly:5", "Every Fri"},
        {tuesday, "monthly jun 22", "| 2025-06-22 monthly:22", "Every month on the 22nd"},
        {tuesday, "weekly", "| 2025-06-10 weekly:", "Every "},
        {tuesday, "monthly", "| 2025-07-01 monthly:1", "Every month on the 1st"},
        {{2025, 6, 1}, "monthly", "| 2025-06-01 monthly:1", "Every month on the 1st"},
        {tuesday, "daily", "| 2025-06-10 daily", "Every day"},
        {tuesday, "daily tomorrow", "| 2025-06-11 daily", "Every day"},
        {tuesday, "every tue", "| 2025-06-10 weekly:2", "Every Tue"},
        {tuesday, "every mon thu", "| 2025-06-12 weekly:1,4", "Every Mon & Thu"},
        {tuesday, "every mon next friday", "| 2025-06-20 weekly:1", "Every Mon"},
        {tuesday, "weekdays", "| 2025-06-10 weekdays", "Every weekday"},
        {{2025, 6, 14}, "weekdays", "| 2025-06-16 weekdays", "Every weekday"},
        {{2025, 2, 10}, "every month on the 31st", "| 2025-02-28 monthly:31", "Every month on the 31st"},
        {{2025, 2, 28}, "every month on the 30th", "| 2025-02-28 monthly:30", "Every month on the 30th"},
        {{2025, 1, 31}, "every month on the 30th", "| 2025-02-28 monthly:30", "Every month on the 30th"},
    };
    for (const auto& [today, line, meaning, display] : cases) {
        const auto result = QuickAdd::parse(line, on(today));
        EXPECT_EQ(summary(result), meaning) << line;
        const auto token = std::ranges::find(result.tokens, QuickAddToken::Kind::repeat, &QuickAddToken::kind);
        ASSERT_NE(token, result.tokens.end()) << line;
        EXPECT_EQ(token->display, display) << line;
        EXPECT_EQ(token->value, result.repeat->ruleString()) << line;
    }
}

TEST(QuickAddParser, findsTheFirstPriority) {
    const std::vector<std::pair<const char*, std::vector<std::string>>> cases{
        {"urgent", {"!urgent", "!1", "p1", "!URGENT"}},
        {"high", {"!high", "!2", "P2"}},
        {"medium", {"!medium", "!med", "!3", "p3"}},
        {"low", {"!low", "!4", "p4"}},
    };
    for (const auto& [value, phrases] : cases) expectPhrases(tuesday, QuickAddToken::Kind::priority, value, phrases);
    expectPlain(tuesday, {"high", "!5", "p0", "p5", "!", "!none", "!!high", "!highest", "p1a"});
    LinesIn{on(tuesday)}.mean({
        {"a !high !low", "a [priority:!high] !low", "a !low | !high"},
        {"a (!high!) b", "a ([priority:!high]!) b", "a (!) b | !high"},
    });
}

TEST(QuickAddParser, findsPeopleAndLabelsOfTheBoard) {
    LinesIn{samples::boardContext()}.mean({
        {"Write brief tomorrow !high #design @robin",
         "Write brief [date:tomorrow] [priority:!high] [label:#design] [assignee:@robin]",
         "Write brief | 2025-06-11 !high @u-robin #l-design"},
        {"a @ro @rob @r @ROBINRAY", "a @ro [assignee:@rob] @r [assignee:@ROBINRAY]", "a @ro @r | @u-robin"},
        {"@sam @samsm @samstone @stone", "@sam [assignee:@samsm] [assignee:@samstone] [assignee:@stone]",
         "@sam | @u-sam @u-sam2"},
        {"@jos\u00e9 @JOSE\u0301 @jose @jn", "[assignee:@jos\u00e9] [assignee:@JOSE\u0301] @jose [assignee:@jn]",
         "@jose | @u-jose"},
        {"@maryanno'neil, @mary.", "[assignee:@maryanno'neil], [assignee:@mary].", "| @u-mary"},
        {"@nobody @ @@rosa", "@nobody @ @@rosa", "@nobody @ @@rosa |"},
        {"#DESIGN_review #design--review #Design", "[label:#DESIGN_review] [label:#design--review] [label:#Design]",
         "| #l-review #l-design"},
        {"#api_v2 #API-V2 #Api--v2", "[label:#api_v2] [label:#API-V2] #Api--v2", "#Api--v2 | #l-api #l-api2"},
        {"#\u00e4rger #A\u0308rger #arger", "[label:#\u00e4rger] [label:#A\u0308rger] #arger", "#arger | #l-aerger"},
        {"# #42 #bugs", "# #42 #bugs", "# #42 #bugs |"},
    });
    QuickAddContext nobody{
        .today = tuesday, .members = std::vector<QuickAddMember>(), .labels = std::vector<QuickAddLabel>()};
    LinesIn{nobody}.mean({{"@rob #bug #\"x y\"", "@rob #bug #\"x y\"", "@rob #bug #\"x y\" |"}});
}

TEST(QuickAddParser, acceptsWellFormedNamesWhileTheListsAreUnknown) {
    LinesIn{samples::unknownLists()}.mean({
        {"@Robin @o'neil-x_1.2 @\u00c9va @4u",
         "[assignee:@Robin] [assignee:@o'neil-x_1.2] [assignee:@\u00c9va] [assignee:@4u]",
         "| @robin @o'neil-x_1.2 @\u00e9va @4u"},
        {"@ @.rob @a@b @e\u0301 @\U0001f600", "@ @.rob @a@b @e\u0301 @\U0001f600",
         "@ @.rob @a@b @e\u0301 @\U0001f600 |"},
        {"#Design #x/y #42 #4\u0662 # #4a", "[label:#Design] [label:#x/y] #42 #4\u0662 # [label:#4a]",
         "#42 #4\u0662 # | #design #x/y #4a"},
        {"#\"Big Thing\" #\u201c a \u201d #\"12\"", "[label:#\"Big Thing\"] [label:#\u201c a \u201d] #\"12\"",
         "#\"12\" | #Big Thing #a"},
    });
    const auto result = QuickAdd::parse("@Robin", samples::unknownLists());
    EXPECT_EQ(result.tokens.at(0).display, "@robin");
}

TEST(QuickAddParser, findsQuotedLabels) {
    LinesIn{samples::boardContext()}.mean({
        {"fix #\"Design Review\", now", "fix [label:#\"Design Review\"], now", "fix, now | #l-review"},
        {"#bug #\"design\" #\u201cbug\u201d", "[label:#bug] [label:#\"design\"] [label:#\u201cbug\u201d]",
         "| #l-design #l-bug"},
        {"x#\"design review\"y z", "x[label:#\"design review\"]y z", "xy z | #l-review"},
        {"#\"bug\"#\"design\"", "[label:#\"bug\"]#\"design\"", "#\"design\" | #l-bug"},
        {"#\"no such friday\" sat", "#\"no such friday\" [date:sat]", "#\"no such friday\" | 2025-06-14"},
        {"#\"bug #design", "#\"bug [label:#design]", "#\"bug | #l-design"},
        {"#\"\" #\" \" #bug\"", "#\"\" #\" \" [label:#bug]\"", "#\"\" #\" \"\" | #l-bug"},
        {"#\"no\"#\"bug\"", "#\"no\"[label:#\"bug\"]", "#\"no\" | #l-bug"},
    });
}

TEST(QuickAddParser, tidiesTheTitle) {
    LinesIn{on(tuesday)}.mean({
        {"", "", "|"},
        {" \t\n ", " \t\n ", "|"},
        {"  Buy  milk\t now ", "  Buy  milk\t now ", "Buy milk now |"},
        {"tomorrow, call", "[date:tomorrow], call", "call | 2025-06-11"},
        {"call, tomorrow, Sam", "call, [date:tomorrow], Sam", "call, Sam | 2025-06-11"},
        {"call tomorrow, Sam", "call [date:tomorrow], Sam", "call, Sam | 2025-06-11"},
        {"call: tomorrow. Sam", "call: [date:tomorrow]. Sam", "call:. Sam | 2025-06-11"},
        {"call tomorrow!", "call [date:tomorrow]!", "call! | 2025-06-11"},
        {"tomorrow !high!? p1", "[date:tomorrow] [priority:!high]!? p1", "!? p1 | 2025-06-11 !high"},
        {"call (tomorrow) Sam", "call ([date:tomorrow]) Sam", "call () Sam | 2025-06-11"},
        {"a, ,b", "a, ,b", "a, ,b |"},
        {"Sam ;:", "Sam ;:", "Sam ; |"},
        {"Sam ,", "Sam ,", "Sam |"},
        {"\u00a0Sam\u3000tomorrow\u2028", "\u00a0Sam\u3000[date:tomorrow]\u2028", "Sam | 2025-06-11"},
        {"tomorrow,5pm", "tomorrow,5pm", "tomorrow,5pm |"},
    });
}

TEST(QuickAddParser, countsUtf16UnitsOfTheLineAsGiven) {
    LinesIn{on(tuesday)}.mean({
        {"\U0001f600 tomorrow", "\U0001f600 [date:tomorrow]", "\U0001f600 | 2025-06-11"},
        {"\u0130\u0130 FR\u0130DAY today", "\u0130\u0130 FR\u0130DAY [date:today]",
         "\u0130\u0130 FR\u0130DAY | 2025-06-10"},
        {"next wee\u212a", "[date:next wee\u212a]", "| 2025-06-16"},  // the Kelvin sign lower-cases to k
    });
    const auto result = QuickAdd::parse("\xff\xfe today", on(tuesday));
    ASSERT_EQ(result.tokens.size(), 1U);
    EXPECT_EQ(result.tokens[0].start, 3U);
    EXPECT_EQ(result.title, "\uFFFD\uFFFD");
    EXPECT_EQ(QuickAdd::parse(std::string_view("\0today", 6), on(tuesday)).title, std::string("\0today", 6));
    EXPECT_EQ(QuickAdd::parse(std::u16string(1, u'\xd800') + u" today", on(tuesday)).title, "\uFFFD");
}

TEST(QuickAddParser, keepsLiteralRangesInTheTitle) {
    const struct {
        const char* line;
        std::vector<QuickAddRange> literal;
        const char* marks;
        const char* title;
    } cases[] = {
        {"call friday sat", {{5, 11}}, "call friday [date:sat]", "call friday"},
        {"call on friday now", {{8, 9}}, "call on friday now", "call on friday now"},
        {"every mon wed daily", {{10, 13}}, "[repeat:every mon] wed daily", "wed daily"},
        {"#\"big thing\" #x", {{6, 7}}, "#\"big thing\" [label:#x]", "#\"big thing\""},
        {"today !high", {{6, 11}, {0, 5}}, "today !high", "today !high"},
        {"today !high", {{5, 6}}, "[date:today] [priority:!high]", ""},
        {"today !high", {{40, 50}, {3, 3}, {9, 2}}, "[date:today] [priority:!high]", ""},
        {"@a @b @c @d", {{0, 1}, {0, 5}, {9, 99}}, "@a @b [assignee:@c] @d", "@a @b @d"},
    };
    for (const auto& [line, literal, marks, title] : cases) {
        const auto result = QuickAdd::parse(line, on(tuesday), literal);
        EXPECT_EQ(marked(line, result), marks);
        EXPECT_EQ(result.title, title) << line;
    }
}

}  // namespace
}  // namespace parvela
