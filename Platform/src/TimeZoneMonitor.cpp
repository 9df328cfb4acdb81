#include <Platform/TimeZoneMonitor.h>

#include <utility>

namespace parvela {

TimeZoneMonitor::TimeZoneMonitor(std::function<void()> onChange, const std::filesystem::path& file) {
    const auto watched = Ref<GFile>::adopt(g_file_new_for_path(file.c_str()));
    monitor_ =
        Ref<GFileMonitor>::adopt(g_file_monitor_file(watched.get(), G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr));
    if (!monitor_) return;  // nothing can be watched here
    changed_ = connect<void(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent)>(
        monitor_.get(), "changed",
        [onChange = std::move(onChange)](GFileMonitor*, GFile*, GFile*, GFileMonitorEvent) { onChange(); });
}

TimeZoneMonitor::~TimeZoneMonitor() {
    changed_.disconnect();
    if (monitor_) g_file_monitor_cancel(monitor_.get());
}

}  // namespace parvela
