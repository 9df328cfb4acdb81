#pragma once

#include <ParvelaKit/CivilDate.h>

#include <chrono>
#include <cstdint>

namespace parvela {

/// A moment, in milliseconds since 1970-01-01 UTC.
using Instant = std::chrono::sys_time<std::chrono::milliseconds>;

/// Where the time comes from. Injected, so that tests choose it.
class Clock {
public:
    virtual ~Clock() = default;

    virtual Instant now() const = 0;
    /// The calendar date of now() in the user's current time zone.
    virtual CivilDate today() const = 0;
    /// When the user's wall clock shows that many minutes after midnight on `day`. A time that the clock skips that day
    /// is the moment of the change; of one that it shows twice, the first.
    virtual Instant moment(CivilDate day, std::int64_t minutesAfterMidnight) const = 0;
};

}  // namespace parvela
