#pragma once

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/Clock.h>

#include <memory>
#include <optional>
#include <string>

namespace parvela::service {

/// A time zone: which calendar day a moment belongs to, and when a day begins.
class Zone {
public:
    /// The machine's zone.
    static Zone local();
    /// By IANA name, such as "Europe/Berlin"; none when the machine does not know it.
    static std::optional<Zone> named(const std::string& name);

    CivilDate dayOf(Instant moment) const;
    Instant startOf(CivilDate day) const;
    /// When clocks there show that many minutes after midnight, 0 to 1439.
    Instant momentOf(CivilDate day, int minutesAfterMidnight) const;

private:
    explicit Zone(std::shared_ptr<void> handle) : handle_(std::move(handle)) {}
    std::shared_ptr<void> handle_;
};

}  // namespace parvela::service
