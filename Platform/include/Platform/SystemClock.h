#pragma once

#include <ParvelaKit/Clock.h>

namespace parvela {

/// The machine's clock and time zone. A zone changed while the program runs counts from the next call on.
class SystemClock : public Clock {
public:
    Instant now() const override;
    CivilDate today() const override;
    Instant moment(CivilDate day, std::int64_t minutesAfterMidnight) const override;
};

}  // namespace parvela
