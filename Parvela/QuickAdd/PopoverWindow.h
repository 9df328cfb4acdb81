#pragma once

#include "Support/WindowFocus.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/MainLoop.h>
#include <Platform/X11DesktopClicks.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// Where the user pointed to open the popover: the tray item, in device pixels of the whole screen.
struct PopoverAnchor {
    int x;
    int y;
    bool operator==(const PopoverAnchor&) const = default;
};

/// How the popover's window comes and goes: where it stands, who has the keyboard before and after it, and when it goes
/// by itself.
///
/// It goes when another window gets the keyboard for good. A layout switch, a hot key or an input method that holds the
/// keyboard for a moment does not take it away. On X11 it goes by a click on the bare desktop too.
class PopoverWindow {
public:
    explicit PopoverWindow(GtkWindow* window);
    PopoverWindow(const PopoverWindow&) = delete;
    PopoverWindow& operator=(const PopoverWindow&) = delete;

    GtkWindow* get() const noexcept { return window_; }
    /// Does ahead of time what the first opening would have to wait for.
    void prepare();

    void present(std::optional<PopoverAnchor> anchor, const std::optional<std::string>& token);
    enum class Focus { giveBack, leave };
    void close(Focus focus);
    bool isShown() const;

    /// Told after it has gone, for whatever reason.
    std::function<void()> onClosed;
    /// Told after it went by itself, besides onClosed.
    std::function<void()> onDismissed;
    std::function<void()> onEscape;
    std::function<void()> onRefresh;

private:
    void place();
    void addKeys();
    void activeChanged();
    void lookForFocus();
    void dismiss();
    void didHide();

    GtkWindow* window_;
    std::optional<PopoverAnchor> anchor_;
    std::optional<DesktopWindow> before_;  ///< had the keyboard before us
    std::unique_ptr<X11DesktopClicks> desktopClicks_;
    MainLoopTimer focusLoss_;
    int looksWithoutFocus_ = 0;
    std::vector<Connection> connections_;
};

}  // namespace parvela
