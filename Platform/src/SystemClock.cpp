#include <Platform/SystemClock.h>

#include <ctime>

namespace parvela {

Instant SystemClock::now() const {
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

CivilDate SystemClock::today() const {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    // localtime_r alone keeps the zone it read first.
    tzset();
    std::tm local{};
    localtime_r(&seconds, &local);
    return {.year = local.tm_year + 1900, .month = local.tm_mon + 1, .day = local.tm_mday};
}

}  // namespace parvela
