#pragma once

#include <ParvelaKit/Clock.h>

namespace parvela::test {

/// Stands still until the test moves it. Its day is the UTC day of its time, unless the test travels east or west.
class FakeClock final : public Clock {
public:
    explicit FakeClock(Instant start = Instant(std::chrono::sys_days(std::chrono::year(2026) / 6 / 10)) +
                                       std::chrono::hours(9))
        : time(start) {}

    Instant now() const override { return time; }
    CivilDate today() const override {
        return CivilDate::fromDayNumber(std::chrono::floor<std::chrono::days>(time + zone).time_since_epoch().count());
    }
    Instant moment(CivilDate day, std::int64_t minutesAfterMidnight) const override {
        return Instant(std::chrono::days(day.dayNumber())) + std::chrono::minutes(minutesAfterMidnight) - zone -
               momentsAhead;
    }
    void advance(std::chrono::milliseconds by) { time += by; }

    Instant time;
    std::chrono::minutes zone{0};          ///< ahead of UTC
    std::chrono::minutes momentsAhead{0};  ///< how much further moment() believes to be
};

}  // namespace parvela::test
