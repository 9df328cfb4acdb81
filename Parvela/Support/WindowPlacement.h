#pragma once

#include <ParvelaKit/WindowState.h>

#include <optional>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// Where windows stand on the screen: X11 only. Wayland tells nobody and takes no wishes; there a place reads as none.

struct WindowPosition {
    double x;
    double y;
    bool operator==(const WindowPosition&) const = default;
};

/// The upper left corner of a shown window; none while it is hidden, maximised, minimised or full screen.
std::optional<WindowPosition> windowPosition(GtkWindow* window);

/// How far a window's visible edges lie inside what windowPosition() places: the width of its shadow at each side.
struct WindowShadow {
    double left;
    double right;
    double top;
    double bottom;
};
WindowShadow shadowOf(GtkWindow* window);

/// Where the pointer is, in the same coordinates; none where the desktop does not tell.
std::optional<WindowPosition> pointerPosition(GtkWindow* window);

/// Moves a window, or lets it appear there when it has not been shown yet.
void moveWindow(GtkWindow* window, WindowPosition position);

/// Gives a shown window another place and size: the corner as windowPosition() reads it, the size without shadow.
void moveAndResizeWindow(GtkWindow* window, const WindowFrame& frame);

bool isMinimized(GtkWindow* window);

/// The areas that windows may cover, without panels.
std::vector<WindowFrame> monitorAreas(GdkDisplay* display);
/// The whole monitors, in the same order.
std::vector<WindowFrame> monitorFrames(GdkDisplay* display);
/// The area of the monitor that a window is on; none when that is not known.
std::optional<WindowFrame> monitorAreaOf(GtkWindow* window);

}  // namespace parvela
