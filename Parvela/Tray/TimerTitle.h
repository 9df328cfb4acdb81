#pragma once

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/TimerInfo.h>

#include <chrono>
#include <string>

namespace parvela {

/// What stands beside the tray's icon while a timer runs, such as " TSK-42 4:07"; the blank keeps it off the icon. A
/// start that lies ahead, as after setting the clock back, counts as now.
std::string timerTitle(const TimerInfo& timer, Instant now);

/// "Timer running on " the task.
std::string timerToolTip(const TimerInfo& timer);

/// How long the title stays right: more than zero, at most a second.
std::chrono::milliseconds untilNextTitle(const TimerInfo& timer, Instant now);

}  // namespace parvela
