#include <ParvelaKit/QuickAddRecords.h>

namespace parvela {
namespace {

using Freq = QuickAddRepeat::Freq;

TEST(QuickAddRecords, rendersRepeatRules) {
    const struct {
        QuickAddRepeat rule;
        const char* text;
        const char* display;
    } cases[] = {
        {{Freq::daily}, "daily", "Every day"},
        {{Freq::weekdays}, "weekdays", "Every weekday"},
        {{Freq::weekly}, "weekly:", "Every "},
        {{Freq::weekly, std::vector<int>{}}, "weekly:", "Every "},
        {{Freq::weekly, std::vector{5}}, "weekly:5", "Every Fri"},
        {{Freq::weekly, std::vector{2, 4}}, "weekly:2,4", "Every Tue & Thu"},
        {{Freq::weekly, std::vector{1, 3, 5}}, "weekly:1,3,5", "Every Mon, Wed & Fri"},
        {{Freq::weekly, std::vector{6, 0}}, "weekly:6,0", "Every Sat & Sun"},
        {{Freq::monthly}, "monthly:1", "Every month on the 1st"},
        {{Freq::monthly, std::nullopt, 22}, "monthly:22", "Every month on the 22nd"},
    };
    for (const auto& [rule, text, display] : cases) {
        EXPECT_EQ(rule.ruleString(), text);
        EXPECT_EQ(rule.displayText(), display);
    }
    EXPECT_THROW((QuickAddRepeat{Freq::weekly, std::vector{7}}.displayText()), std::out_of_range);
}

TEST(QuickAddRecords, writesOrdinals) {
    const std::vector<std::pair<int, const char*>> cases{
        {1, "1st"},   {2, "2nd"},     {3, "3rd"},     {4, "4th"},     {10, "10th"},  {11, "11th"}, {12, "12th"},
        {13, "13th"}, {14, "14th"},   {20, "20th"},   {21, "21st"},   {22, "22nd"},  {23, "23rd"}, {30, "30th"},
        {31, "31st"}, {101, "101st"}, {111, "111th"}, {112, "112th"}, {122, "122nd"}};
    for (const auto& [number, text] : cases) EXPECT_EQ(QuickAdd::ordinal(number), text);
}

TEST(QuickAddRecords, showsTimes) {
    const std::vector<std::pair<const char*, const char*>> cases{
        {"00:00", "12 AM"},
        {"12:00", "12 PM"},
        {"13:05", "1:05 PM"},
        {"07:30", "7:30 AM"},
        {"09:00", "9 AM"},
        {"17:30", "5:30 PM"},
        {"00:05", "12:05 AM"},
        {"23:59", "11:59 PM"},
        {"9", "9 AM"},
        {"15", "3 PM"},
        {"", ""},
        {"soon", "soon"},
        {"9:x", "9:x"},
        {"9:", "9:"},
    };
    for (const auto& [time, display] : cases) EXPECT_EQ(QuickAdd::timeDisplayText(time), display) << time;
}

TEST(QuickAddRecords, showsDatesFromToday) {
    const CivilDate today{2025, 12, 31};
    const std::vector<std::pair<CivilDate, const char*>> cases{
        {{2025, 12, 31}, "Today"},    {{2026, 1, 1}, "Tomorrow"},         {{2025, 12, 30}, "Tue, Dec 30"},
        {{2025, 6, 1}, "Sun, Jun 1"}, {{2026, 1, 2}, "Fri, Jan 2, 2026"}, {{987, 2, 3}, "Sat, Feb 3, 0987"},
    };
    for (const auto& [date, display] : cases) EXPECT_EQ(QuickAdd::dateDisplayText(date, today), display);
}

}  // namespace
}  // namespace parvela
