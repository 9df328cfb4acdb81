#include <ParvelaKit/CivilDate.h>

namespace parvela {
namespace {

TEST(CivilDate, dayNumbersMatchKnownDates) {
    const std::pair<CivilDate, std::int64_t> cases[] = {
        {{1970, 1, 1}, 0}, {{1969, 12, 31}, -1}, {{2000, 2, 29}, 11016}, {{2025, 6, 10}, 20249}, {{0, 3, 1}, -719468},
    };
    for (const auto& [date, number] : cases) {
        EXPECT_EQ(date.dayNumber(), number) << date.text();
        EXPECT_EQ(CivilDate::fromDayNumber(number), date);
    }
}

TEST(CivilDate, everyDayOfEightCenturiesFollowsTheOneBefore) {
    CivilDate date{1700, 1, 1};
    for (auto number = date.dayNumber(); date.year < 2500; ++number) {
        ASSERT_EQ(date.dayNumber(), number);
        ASSERT_EQ(CivilDate::fromDayNumber(number), date);
        const int weekday = date.weekday();
        date = date.day < CivilDate::daysInMonth(date.year, date.month) ? CivilDate{date.year, date.month, date.day + 1}
               : date.month < 12                                        ? CivilDate{date.year, date.month + 1, 1}
                                                                        : CivilDate{date.year + 1, 1, 1};
        ASSERT_EQ(date.weekday(), (weekday + 1) % 7);
    }
}

TEST(CivilDate, monthsAreClampedToTheirLength) {
    EXPECT_EQ((CivilDate{2025, 1, 31}.addingMonths(1)), (CivilDate{2025, 2, 28}));
    EXPECT_EQ((CivilDate{2024, 1, 31}.addingMonths(1)), (CivilDate{2024, 2, 29}));
    EXPECT_EQ((CivilDate{2025, 1, 31}.addingMonths(1, 1)), (CivilDate{2025, 2, 1}));
    EXPECT_EQ((CivilDate{2025, 12, 5}.addingMonths(13)), (CivilDate{2027, 1, 5}));
    EXPECT_EQ((CivilDate{2025, 1, 31}.addingMonths(-2)), (CivilDate{2024, 11, 30}));
}

TEST(CivilDate, nextWeekBeginsOnTheFirstMondayAfter) {
    EXPECT_EQ((CivilDate{2025, 6, 9}.startOfNextWeek()), (CivilDate{2025, 6, 16}));   // from a Monday
    EXPECT_EQ((CivilDate{2025, 6, 15}.startOfNextWeek()), (CivilDate{2025, 6, 16}));  // from a Sunday
}

TEST(CivilDate, readsOnlyDatesThatExist) {
    EXPECT_EQ(CivilDate::parse("2024-02-29"), (CivilDate{2024, 2, 29}));
    for (const char* text : {"2025-02-29", "2025-13-01", "2025-00-10", "2025-1-01", "2025-01-1x", "-025-01-01", ""}) {
        EXPECT_EQ(CivilDate::parse(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace parvela
