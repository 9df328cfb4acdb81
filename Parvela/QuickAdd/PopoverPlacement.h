#pragma once

#include <ParvelaKit/WindowState.h>

#include <span>

namespace parvela {

struct PopoverPoint {
    double x;
    double y;
    bool operator==(const PopoverPoint&) const = default;
};

struct PopoverMonitor {
    WindowFrame whole;
    WindowFrame area;  ///< what windows may cover: without panels
};

/// Where a window of that size stands beside a point in a panel: below it, or above it where there is no room below,
/// wholly inside the area of the point's monitor. At least one monitor.
PopoverPoint placeBeside(PopoverPoint point, double width, double height, std::span<const PopoverMonitor> monitors);

/// Where it stands when nothing was pointed at: in the middle of the monitor with `point`, nearer to the top.
PopoverPoint placeInView(PopoverPoint point, double width, double height, std::span<const PopoverMonitor> monitors);

}  // namespace parvela
