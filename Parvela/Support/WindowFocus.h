#pragma once

#include "Support/WindowPlacement.h"

#include <optional>
#include <string>

#include <gtk/gtk.h>

namespace parvela {

/// Which window of the desktop has the keyboard: X11 only. Elsewhere the compositor alone knows and decides.

/// A window of any program, as the window manager names it.
using DesktopWindow = unsigned long;

/// The active window; none when there is none or nobody tells.
std::optional<DesktopWindow> activeWindow(GdkDisplay* display);

/// Asks the window manager to make a window active. One that has gone is left alone.
void activate(GdkDisplay* display, DesktopWindow window);

enum class KeyboardPlace {
    here,       ///< in the window, though a program may hold the keyboard for the moment, as a layout switch does
    elsewhere,  ///< in another window
    nowhere,    ///< on the bare desktop, or on its way
    unknown,    ///< nobody tells
};
KeyboardPlace keyboardPlace(GtkWindow* window);

/// Makes a window a small helper: in no taskbar and no pager, without the effects of a full window.
void becomeUtility(GtkWindow* window);

/// Shows a window and gives it the keyboard. `token` is what the desktop passed on with the user's wish (an
/// xdg-activation token or startup id). Without one the wish counts as made now, so that no focus-stealing prevention
/// holds it back.
void presentForUser(GtkWindow* window, const std::optional<std::string>& token);

/// The place of the mouse pointer on the screen, in device pixels; none when nobody tells.
std::optional<WindowPosition> pointerPosition(GdkDisplay* display);

/// How many device pixels an application pixel of the window has.
double scaleOf(GtkWindow* window);

}  // namespace parvela
