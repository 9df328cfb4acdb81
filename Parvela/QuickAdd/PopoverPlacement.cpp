#include "QuickAdd/PopoverPlacement.h"

#include <algorithm>
#include <cmath>

namespace parvela {

namespace {

/// Between the window and the edges of its area.
constexpr double margin = 8;
/// Between the window and the point, where the panel takes no room from the area: about half a panel's height.
constexpr double distance = 18;

double clampedInto(double position, double size, double start, double length) {
    const double last = start + length - size - margin;
    return std::max(start + margin, std::min(position, last));
}

/// Of the monitor that the point is on, else of the nearest one.
const WindowFrame& areaOf(PopoverPoint point, std::span<const PopoverMonitor> monitors) {
    const auto away = [point](const PopoverMonitor& monitor) {
        const WindowFrame& whole = monitor.whole;
        const double x = std::max({whole.x - point.x, 0.0, point.x - (whole.x + whole.width)});
        const double y = std::max({whole.y - point.y, 0.0, point.y - (whole.y + whole.height)});
        return std::hypot(x, y);
    };
    return std::ranges::min_element(monitors, {}, away)->area;
}

}  // namespace

PopoverPoint placeBeside(PopoverPoint point, double width, double height, std::span<const PopoverMonitor> monitors) {
    const WindowFrame& area = areaOf(point, monitors);
    const double below = point.y + distance;
    const bool fitsBelow = below + height + margin <= area.y + area.height;
    return {clampedInto(point.x - width / 2, width, area.x, area.width),
            clampedInto(fitsBelow ? below : point.y - distance - height, height, area.y, area.height)};
}

PopoverPoint placeInView(PopoverPoint point, double width, double height, std::span<const PopoverMonitor> monitors) {
    const WindowFrame& area = areaOf(point, monitors);
    return {clampedInto(area.x + (area.width - width) / 2, width, area.x, area.width),
            clampedInto(area.y + (area.height - height) / 3, height, area.y, area.height)};
}

}  // namespace parvela
