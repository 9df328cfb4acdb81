#include "Tray/TimerTitle.h"

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>

namespace parvela {

std::string timerTitle(const TimerInfo& timer, Instant now) {
    const auto elapsed = std::chrono::floor<std::chrono::seconds>(now - timer.startedAt).count();
    const std::int64_t seconds = std::max<std::int64_t>(elapsed, 0);
    const std::int64_t minutes = seconds % 3600 / 60;
    const std::string time = seconds < 3600 ? fmt::format("{}:{:02}", minutes, seconds % 60)
                                            : fmt::format("{}:{:02}:{:02}", seconds / 3600, minutes, seconds % 60);
    return fmt::format(" {} {}", timer.taskKey, time);
}

std::string timerToolTip(const TimerInfo& timer) {
    return fmt::format("Timer running on {}: {}", timer.taskKey, timer.taskTitle);
}

std::chrono::milliseconds untilNextTitle(const TimerInfo& timer, Instant now) {
    const auto elapsed = now - timer.startedAt;
    return std::chrono::floor<std::chrono::seconds>(elapsed) + std::chrono::seconds(1) - elapsed;
}

}  // namespace parvela
