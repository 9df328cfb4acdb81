#include "Settings/TimeOfDay.h"

namespace parvela {
namespace {

TEST(TimeOfDayTest, readsWhatPeopleType) {
    const struct {
        const char* typed;
        int minutes;
    } cases[] = {
        {"9", 540},    {"09:00", 540},   {" 9:30 ", 570}, {"9.30", 570}, {"930", 570},
        {"0930", 570}, {"23:59", 1439},  {"0:00", 0},     {"12 am", 0},  {"12:15 a.m.", 15},
        {"12pm", 720}, {"1:05 PM", 785}, {"9p", 1260},
    };
    for (const auto& [typed, minutes] : cases) EXPECT_EQ(timeFromText(typed), minutes) << typed;
    for (const char* typed :
         {"", "24:00", "9:5", "9:60", "13 pm", "0 am", "noon", "-1", "9:00:00", "99999", "٩:٠٠", "pm"}) {
        EXPECT_EQ(timeFromText(typed), std::nullopt) << typed;
    }
}

TEST(TimeOfDayTest, everyTimeReadsAsItIsWritten) {
    for (int minutes = 0; minutes < 24 * 60; ++minutes) {
        for (const HourCycle cycle : {HourCycle::twelve, HourCycle::twentyFour}) {
            EXPECT_EQ(timeFromText(timeText(minutes, cycle)), minutes) << timeText(minutes, cycle);
        }
    }
    EXPECT_EQ(timeText(0, HourCycle::twelve), "12:00 AM");
    EXPECT_EQ(timeText(540, HourCycle::twentyFour), "09:00");
}

}  // namespace
}  // namespace parvela
