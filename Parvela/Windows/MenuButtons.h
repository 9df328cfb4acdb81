#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// The menu buttons of a window, of which one is shown at a time. Their menu is built when it is first opened, and the
/// keyboard goes back to where it was when it closes.
class MenuButtons {
public:
    /// `otherwise` is who gets the keyboard when what had it before is gone.
    MenuButtons(GtkWindow* window, std::vector<GtkMenuButton*> buttons, GMenuModel* menu,
                std::function<GtkWidget*()> otherwise);
    MenuButtons(const MenuButtons&) = delete;
    MenuButtons& operator=(const MenuButtons&) = delete;
    ~MenuButtons();

    /// What commands are meant for: the widget with the keyboard focus, or that had it before a menu was opened. May be
    /// null.
    GtkWidget* focus() const;

private:
    void opens(GtkMenuButton* button);
    void giveFocusBack();

    GtkWindow* window_;
    std::vector<GtkMenuButton*> buttons_;
    Ref<GMenuModel> menu_;
    std::function<GtkWidget*()> otherwise_;
    GtkWidget* before_ = nullptr;  ///< a weak pointer
    std::vector<Connection> connections_;
    MainLoopTimer closed_;
};

}  // namespace parvela
