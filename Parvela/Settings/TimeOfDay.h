#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// How clocks count the hours.
enum class HourCycle { twelve, twentyFour };

/// What the process's locale uses.
HourCycle localeHourCycle();

/// A time of day in minutes after midnight, 0 to 1439, as people read it: "09:00", "9:00 AM".
std::string timeText(int minutes, HourCycle cycle);

/// What people type for a time: "9", "9:30", "09.30", "0930", "9 pm", "12:15 a.m."; none for anything else.
std::optional<int> timeFromText(std::string_view typed);

}  // namespace parvela
