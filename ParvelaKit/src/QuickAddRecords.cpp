#include <ParvelaKit/QuickAddRecords.h>

#include <array>
#include <charconv>

#include <fmt/format.h>

namespace parvela {

namespace {

using namespace std::string_view_literals;

constexpr std::array weekdayNames{"Sun"sv, "Mon"sv, "Tue"sv, "Wed"sv, "Thu"sv, "Fri"sv, "Sat"sv};
constexpr std::array monthNames{"Jan"sv, "Feb"sv, "Mar"sv, "Apr"sv, "May"sv, "Jun"sv,
                                "Jul"sv, "Aug"sv, "Sep"sv, "Oct"sv, "Nov"sv, "Dec"sv};

std::string_view weekdayName(int weekday) {
    return weekdayNames.at(static_cast<std::size_t>(weekday));
}

/// "Mon, Wed & Fri"
std::string enumerated(const std::vector<int>& weekdays) {
    std::string text;
    for (std::size_t i = 0; i < weekdays.size(); ++i) {
        if (i > 0) text += i + 1 == weekdays.size() ? " & " : ", ";
        text += weekdayName(weekdays[i]);
    }
    return text;
}

std::optional<int> number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0) return std::nullopt;
    return value;
}

}  // namespace

std::string QuickAddRepeat::ruleString() const {
    switch (freq) {
        case Freq::daily:
            return "daily";
        case Freq::weekdays:
            return "weekdays";
        case Freq::weekly: {
            std::string rule = "weekly:";
            for (const int weekday : weekdays.value_or(std::vector<int>())) {
                if (rule.back() != ':') rule += ',';
                rule += std::to_string(weekday);
            }
            return rule;
        }
        case Freq::monthly:
            return "monthly:" + std::to_string(monthDay.value_or(1));
    }
    return {};
}

std::string QuickAddRepeat::displayText() const {
    switch (freq) {
        case Freq::daily:
            return "Every day";
        case Freq::weekdays:
            return "Every weekday";
        case Freq::weekly:
            return "Every " + (weekdays ? enumerated(*weekdays) : std::string());
        case Freq::monthly:
            return "Every month on the " + QuickAdd::ordinal(monthDay.value_or(1));
    }
    return {};
}

namespace QuickAdd {

namespace {

struct PriorityTexts {
    std::string_view api;
    std::string_view display;
};

/// By raw value.
constexpr std::array priorityTexts{
    PriorityTexts{"none", "None"}, PriorityTexts{"low", "Low"},       PriorityTexts{"medium", "Medium"},
    PriorityTexts{"high", "High"}, PriorityTexts{"urgent", "Urgent"},
};

}  // namespace

std::string_view apiString(QuickAddPriority priority) {
    return priorityTexts.at(static_cast<std::size_t>(priority)).api;
}

std::optional<QuickAddPriority> priorityFromApiString(std::string_view text) {
    for (std::size_t i = 0; i < priorityTexts.size(); ++i) {
        if (priorityTexts[i].api == text) return static_cast<QuickAddPriority>(i);
    }
    return std::nullopt;
}

std::string_view displayText(QuickAddPriority priority) {
    return priorityTexts.at(static_cast<std::size_t>(priority)).display;
}

std::string_view kindName(QuickAddToken::Kind kind) {
    constexpr std::array names{"assignee"sv, "label"sv, "priority"sv, "date"sv, "time"sv, "repeat"sv};
    return names.at(static_cast<std::size_t>(kind));
}

std::string ordinal(int number) {
    constexpr std::array suffixes{"th"sv, "st"sv, "nd"sv, "rd"sv};
    const int lastTwo = number % 100;
    const int last = number % 10;
    const bool isRegular = (lastTwo >= 11 && lastTwo <= 13) || last > 3;
    std::string text = std::to_string(number);
    text += isRegular ? "th"sv : suffixes.at(static_cast<std::size_t>(last));
    return text;
}

std::string dateDisplayText(CivilDate date, CivilDate today) {
    const std::int64_t distance = date.dayNumber() - today.dayNumber();
    if (distance == 0) return "Today";
    if (distance == 1) return "Tomorrow";
    std::string text(weekdayName(date.weekday()));
    text += ", ";
    text += monthNames.at(static_cast<std::size_t>(date.month - 1));
    text += ' ';
    text += std::to_string(date.day);
    if (date.year != today.year) text += fmt::format(", {:04}", date.year);
    return text;
}

std::string timeDisplayText(std::string_view time) {
    const std::size_t colon = time.find(':');
    const auto hour = number(time.substr(0, colon));
    const auto minutes = colon == std::string_view::npos ? std::optional(0) : number(time.substr(colon + 1));
    if (!hour || !minutes) return std::string(time);
    std::string text = std::to_string(*hour % 12 == 0 ? 12 : *hour % 12);
    if (*minutes != 0) {
        text += *minutes < 10 ? ":0" : ":";
        text += std::to_string(*minutes);
    }
    text += *hour < 12 ? " AM" : " PM";
    return text;
}

}  // namespace QuickAdd

}  // namespace parvela
