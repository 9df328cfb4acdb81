#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/MenuTable.h>
#include <ParvelaKit/NativeBridge.h>

#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// The main menu, made once from the menu table: for the menu button of every window, and for desktops that show a
/// menu bar of their own.
class MainMenu {
public:
    /// Sets the menu bar and the keys of `application`.
    explicit MainMenu(GtkApplication* application);

    /// What menu buttons show.
    GMenuModel* model() const noexcept { return G_MENU_MODEL(compact_.get()); }

    /// The boards under "Open Board".
    void setBoards(const std::vector<BoardRef>& boards);

    /// The keys shown beside "Quick Add…", as GTK writes an accelerator; empty for none. They are grabbed elsewhere.
    void setQuickAddKeys(const std::string& accelerator);

    /// "win.zoomIn" and the like; with the item's tag as its target when it has one.
    static std::string detailedAction(const menuTable::Item& item);

private:
    Ref<GMenu> sectionsOf(const menuTable::Menu& menu);
    void append(GMenu* section, const menuTable::Item& item);

    Ref<GMenu> compact_;
    Ref<GMenu> bar_;
    Ref<GMenu> boards_;
    /// Where "Quick Add…" stands.
    Ref<GMenu> quickAddSection_;
    int quickAddPosition_ = -1;
};

}  // namespace parvela
