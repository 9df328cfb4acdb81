#include <Platform/SystemClock.h>

#include <algorithm>
#include <ctime>

namespace parvela {

namespace {

/// As far as a local time can be from UTC, in seconds.
constexpr std::int64_t farFromUtc = 25 * 3600;

std::tm localTime(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm local{};
    localtime_r(&time, &local);
    return local;
}

std::int64_t offsetAt(std::int64_t seconds) {
    return localTime(seconds).tm_gmtoff;
}

/// The first second at which the wall clock shows `wall`, a time written as if it were UTC, or more.
std::int64_t whenWallClockShows(std::int64_t wall) {
    const auto [least, most] = std::minmax({offsetAt(wall - farFromUtc), offsetAt(wall + farFromUtc)});
    std::int64_t late = wall - least;
    std::int64_t early = wall - most;
    if (offsetAt(early) == most) return early;
    if (offsetAt(late) == least) return late;
    // Skipped: the change lies between.
    while (late - early > 1) {
        const std::int64_t middle = early + (late - early) / 2;
        (middle + offsetAt(middle) < wall ? early : late) = middle;
    }
    return late;
}

}  // namespace

Instant SystemClock::now() const {
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

CivilDate SystemClock::today() const {
    // localtime_r alone keeps the zone it read first.
    tzset();
    const std::tm local = localTime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
    return {.year = local.tm_year + 1900, .month = local.tm_mon + 1, .day = local.tm_mday};
}

Instant SystemClock::moment(CivilDate day, std::int64_t minutesAfterMidnight) const {
    tzset();
    const std::int64_t wall = (day.dayNumber() * 24 * 60 + minutesAfterMidnight) * 60;
    return Instant(std::chrono::seconds(whenWallClockShows(wall)));
}

}  // namespace parvela
