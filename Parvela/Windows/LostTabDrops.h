#pragma once

#include <Platform/MainLoop.h>

#include <functional>

#include <gtk/gtk.h>

namespace parvela {

/// On X11 without a desktop window, GTK never ends the drag of a tab that is dropped outside all windows, and the tab
/// would be gone with it. Such a drag is ended here, so that the tab gets a window as on other desktops.
class LostTabDrops {
public:
    /// `isTabUnderWay` tells whether some tab has left its window and not arrived anywhere.
    explicit LostTabDrops(std::function<bool()> isTabUnderWay);
    LostTabDrops(const LostTabDrops&) = delete;
    LostTabDrops& operator=(const LostTabDrops&) = delete;
    ~LostTabDrops();

private:
    void dropped(GdkDrag* drag);

    std::function<bool()> isTabUnderWay_;
    MainLoopTimer patience_;
    guint signal_;
    gulong hook_;
};

}  // namespace parvela
