#pragma once

#include "Support/WindowPlacement.h"

#include <ParvelaKit/WindowState.h>

#include <optional>
#include <string>

#include <gtk/gtk.h>

namespace parvela {

/// Where one window stands and how much it covers; its place is not known on Wayland.
class WindowPlace {
public:
    /// The window outlives this object.
    explicit WindowPlace(GtkWindow* window) : window_(window) {}

    /// To be called before the window is shown: its size, and its place where the desktop allows that.
    void set(const WindowFrame& frame);
    /// The frame to remember.
    std::string text() const;
    /// For a window that takes a tab of this one: of the same size, a little aside or under the pointer.
    enum class Beside { thisWindow, pointer };
    std::optional<WindowFrame> beside(Beside what) const;

    void toggleMaximized();
    /// Covers the screen without being maximised, and back.
    void toggleFill();

private:
    GtkWindow* window_;
    /// Where the window stood when it was last neither maximised nor hidden.
    mutable std::optional<WindowPosition> position_;
    std::optional<WindowFrame> frameBeforeFill_;
};

}  // namespace parvela
