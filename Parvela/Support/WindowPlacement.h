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

/// How far the window's visible corner lies inside what windowPosition() places: the width of its shadow there.
WindowPosition shadowOffset(GtkWindow* window);

/// Where the pointer is, in the same coordinates; none where the desktop does not tell.
std::optional<WindowPosition> pointerPosition(GtkWindow* window);

/// Moves a window, or lets it appear there when it has not been shown yet.
void moveWindow(GtkWindow* window, WindowPosition position);

bool isMinimized(GtkWindow* window);

/// The areas that windows may cover, without panels.
std::vector<WindowFrame> monitorAreas(GdkDisplay* display);
/// The whole monitors, in the same order.
std::vector<WindowFrame> monitorFrames(GdkDisplay* display);
/// The area of the monitor that a window is on; none when that is not known.
std::optional<WindowFrame> monitorAreaOf(GtkWindow* window);

}  // namespace parvela
