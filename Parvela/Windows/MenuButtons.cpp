#include "Windows/MenuButtons.h"

#include <algorithm>
#include <utility>

namespace parvela {

MenuButtons::MenuButtons(GtkWindow* window, std::vector<GtkMenuButton*> buttons, GMenuModel* menu,
                         std::function<GtkWidget*()> otherwise)
    : window_(window),
      buttons_(std::move(buttons)),
      menu_(Ref<GMenuModel>::ref(menu)),
      otherwise_(std::move(otherwise)) {
    for (GtkMenuButton* const button : buttons_) {
        gtk_menu_button_set_create_popup_func(
            button, [](GtkMenuButton* opened, gpointer self) { static_cast<MenuButtons*>(self)->opens(opened); }, this,
            nullptr);
    }
}

MenuButtons::~MenuButtons() {
    g_clear_weak_pointer(&before_);
}

GtkWidget* MenuButtons::focus() const {
    GtkWidget* const focus = gtk_window_get_focus(window_);
    const bool isInMenu = focus && std::ranges::any_of(buttons_, [focus](GtkMenuButton* button) {
                              return gtk_widget_is_ancestor(focus, GTK_WIDGET(button)) != FALSE;
                          });
    return focus && !isInMenu && gtk_widget_get_mapped(focus) ? focus : before_;
}

void MenuButtons::opens(GtkMenuButton* button) {
    closed_.reset();
    g_set_weak_pointer(&before_, focus());
    // The widgets of a menu as long as ours take longer to build than the rest of the window.
    if (gtk_menu_button_get_menu_model(button)) return;
    gtk_menu_button_set_menu_model(button, menu_.get());
    connections_.push_back(
        connect<void(GtkPopover*)>(gtk_menu_button_get_popover(button), "closed", [this](GtkPopover*) {
            // Once the chosen command has had its say.
            closed_ = MainLoopTimer(std::chrono::milliseconds{0}, [this] { giveFocusBack(); });
        }));
}

/// The toolkit leaves a window without focus when an item of a submenu was chosen.
void MenuButtons::giveFocusBack() {
    GtkWidget* const wanted = focus();
    if (wanted != gtk_window_get_focus(window_) || !wanted) {
        GtkWidget* const target = wanted && gtk_widget_get_mapped(wanted) ? wanted : otherwise_();
        if (GTK_IS_TEXT(target)) {
            gtk_text_grab_focus_without_selecting(GTK_TEXT(target));
        } else if (target) {
            gtk_widget_grab_focus(target);
        }
    }
    g_clear_weak_pointer(&before_);
}

}  // namespace parvela
