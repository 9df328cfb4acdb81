#include "Settings/TimeOfDay.h"

namespace parvela {
namespace {

TEST(TimeOfDayTest, readsWhatPeopleType) {
    const struct {
        const char* typed;
        std::optional<int> minutes;
    } cases[] = {
        {"9", 540},
        {"09:00", 540},
        {" 9:30 ", 570},
        {"9.30", 570},
        {"930", 570},
        {"0930", 570},
        {"23:59", 1439},
        {"0:00", 0},
        {"12 am", 0},
        {"12:15 a.m.", 15},
        {"12pm", 720},
        {"1:05 PM", 785},
        {"9p", 1260},
        {"", std::nullopt},
        {"24:00", std::nullopt},
        {"9:5", std::nullopt},
        {"9:60", std::nullopt},
        {"13 pm", std::nullopt},
        {"0 am", std::nullopt},
        {"noon", std::nullopt},
        {"-1", std::nullopt},
        {"9:00:00", std::nullopt},
        {"99999", std::nullopt},
        {"٩:٠٠", std::nullopt},
        {"pm", std::nullopt},
    };
    for (const auto& [typed, minutes] : cases) EXPECT_EQ(timeFromText(typed), minutes) << typed;
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
