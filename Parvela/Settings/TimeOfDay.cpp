#include "Settings/TimeOfDay.h"

#include <ParvelaKit/Text.h>

#include <array>
#include <langinfo.h>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr int minutesInHour = 60;
constexpr int noon = 12;

enum class HalfOfDay { unsaid, morning, afternoon };

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes "am", "p.m." and the like off the end.
HalfOfDay takeHalf(std::string& text) {
    struct Ending {
        std::string_view text;
        HalfOfDay half;
    };
    static constexpr std::array endings = std::to_array<Ending>({{"a.m.", HalfOfDay::morning},
                                                                 {"p.m.", HalfOfDay::afternoon},
                                                                 {"am", HalfOfDay::morning},
                                                                 {"pm", HalfOfDay::afternoon},
                                                                 {"a", HalfOfDay::morning},
                                                                 {"p", HalfOfDay::afternoon}});
    for (const Ending& ending : endings) {
        if (!text.ends_with(ending.text)) continue;
        text.resize(text.size() - ending.text.size());
        text = trimmed(text);
        return ending.half;
    }
    return HalfOfDay::unsaid;
}

/// One or two digits.
std::optional<int> number(std::string_view text) {
    if (text.empty() || text.size() > 2) return std::nullopt;
    int value = 0;
    for (const char c : text) {
        if (!isDigit(c)) return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

}  // namespace

HourCycle localeHourCycle() {
    const std::string_view format(nl_langinfo(T_FMT));
    const bool twelve = format.contains("%r") || format.contains("%p") || format.contains("%I");
    return twelve ? HourCycle::twelve : HourCycle::twentyFour;
}

std::string timeText(int minutes, HourCycle cycle) {
    const int hour = minutes / minutesInHour;
    const int minute = minutes % minutesInHour;
    if (cycle == HourCycle::twentyFour) return fmt::format("{:02}:{:02}", hour, minute);
    return fmt::format("{}:{:02} {}", hour % noon == 0 ? noon : hour % noon, minute, hour < noon ? "AM" : "PM");
}

std::optional<int> timeFromText(std::string_view typed) {
    std::string text = asciiLowercased(trimmed(typed));
    const HalfOfDay half = takeHalf(text);

    std::optional<int> hour;
    std::optional<int> minute = 0;
    if (const auto mark = text.find_first_of(":."); mark != std::string::npos) {
        const std::string_view minuteText = std::string_view(text).substr(mark + 1);
        hour = number(std::string_view(text).substr(0, mark));
        minute = minuteText.size() == 2 ? number(minuteText) : std::nullopt;
    } else if (text.size() > 2) {  // "930", "0930"
        hour = number(std::string_view(text).substr(0, text.size() - 2));
        minute = number(std::string_view(text).substr(text.size() - 2));
    } else {
        hour = number(text);
    }
    if (!hour || !minute || *minute >= minutesInHour) return std::nullopt;

    if (half == HalfOfDay::unsaid) {
        if (*hour >= 2 * noon) return std::nullopt;
        return *hour * minutesInHour + *minute;
    }
    if (*hour < 1 || *hour > noon) return std::nullopt;
    return (*hour % noon + (half == HalfOfDay::afternoon ? noon : 0)) * minutesInHour + *minute;
}

}  // namespace parvela
