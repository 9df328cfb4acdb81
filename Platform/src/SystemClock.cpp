#include <Platform/SystemClock.h>

#include <cstdlib>
#include <ctime>
#include <limits>

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

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

Instant SystemClock::moment(CivilDate day, std::int64_t minutesAfterMidnight) const {
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(icu::TimeZone::detectHostTimeZone(), icu::Locale::getRoot(), status);
    calendar.setGregorianChange(-std::numeric_limits<double>::max(), status);
    calendar.setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    calendar.setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    calendar.clear();
    calendar.set(day.year, day.month - 1, day.day, static_cast<std::int32_t>(minutesAfterMidnight / 60),
                 static_cast<std::int32_t>(minutesAfterMidnight % 60));
    const double milliseconds = calendar.getTime(status);
    if (U_FAILURE(status)) std::abort();  // ICU without its data cannot run this program
    return Instant(std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds)));
}

}  // namespace parvela
