#pragma once

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/Observable.h>

#include <functional>

namespace parvela {

/// Calls `action` once, in the main loop: when the wall clock reaches `moment`, also when the machine slept over it, or
/// when the clock was set. Dropping the subscription takes the call back.
[[nodiscard]] Subscription setWallClockAlarm(Instant moment, std::function<void()> action);

}  // namespace parvela
