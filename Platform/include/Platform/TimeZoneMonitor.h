#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <filesystem>
#include <functional>

#include <gio/gio.h>

namespace parvela {

/// Tells when the machine's time zone may have changed.
class TimeZoneMonitor {
public:
    /// `onChange` is called in the main loop. `file` says which zone is in force.
    explicit TimeZoneMonitor(std::function<void()> onChange, const std::filesystem::path& file = "/etc/localtime");
    TimeZoneMonitor(const TimeZoneMonitor&) = delete;
    TimeZoneMonitor& operator=(const TimeZoneMonitor&) = delete;
    ~TimeZoneMonitor();

private:
    Ref<GFileMonitor> monitor_;
    Connection changed_;
};

}  // namespace parvela
