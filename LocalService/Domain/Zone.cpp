#include "Domain/Zone.h"

#include <ParvelaKit/GLibPtr.h>

#include <glib.h>

namespace parvela::service {

namespace {

using DateTimePtr = GLibPtr<GDateTime, g_date_time_unref>;

GTimeZone* zoneOf(const std::shared_ptr<void>& handle) {
    return static_cast<GTimeZone*>(handle.get());
}

std::shared_ptr<void> share(GTimeZone* zone) {
    return {zone, [](void* value) { g_time_zone_unref(static_cast<GTimeZone*>(value)); }};
}

}  // namespace

Zone Zone::local() {
    return Zone(share(g_time_zone_new_local()));
}

std::optional<Zone> Zone::named(const std::string& name) {
    if (name.empty() || name.size() > 64 || name.contains("..") || name.front() == '/') return {};
    GTimeZone* zone = g_time_zone_new_identifier(name.c_str());
    if (!zone) return {};
    return Zone(share(zone));
}

CivilDate Zone::dayOf(Instant moment) const {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
    const DateTimePtr utc(g_date_time_new_from_unix_utc(seconds));
    const DateTimePtr there(utc ? g_date_time_to_timezone(utc.get(), zoneOf(handle_)) : nullptr);
    if (!there) return CivilDate{};
    CivilDate day;
    g_date_time_get_ymd(there.get(), &day.year, &day.month, &day.day);
    return day;
}

Instant Zone::startOf(CivilDate day) const {
    return momentOf(day, 0);
}

Instant Zone::momentOf(CivilDate day, int minutesAfterMidnight) const {
    const DateTimePtr there(g_date_time_new(zoneOf(handle_), day.year, day.month, day.day, minutesAfterMidnight / 60,
                                            minutesAfterMidnight % 60, 0));
    if (!there) return Instant{};
    return Instant(std::chrono::seconds(g_date_time_to_unix(there.get())));
}

}  // namespace parvela::service
