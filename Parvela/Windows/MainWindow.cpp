#include "Windows/MainWindow.h"

#include "Support/Interface.h"
#include "Windows/ClosingTabs.h"
#include "Windows/MainWindowController.h"
#include "Windows/WindowManager.h"

#include <ParvelaKit/TitlebarLayout.h>

#include <algorithm>
#include <utility>

#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>

namespace parvela {

MainWindow::MainWindow(WindowManager& manager, GtkApplication* application, GMenuModel* menu) : manager_(manager) {
    const Interface interface("MainWindow.ui");
    window_ = Ref<AdwApplicationWindow>::ref(interface.get<AdwApplicationWindow>("window"));
    place_ = std::make_unique<WindowPlace>(get());
    tabs_ = interface.get<AdwTabView>("tabs");
    toasts_ = interface.get<AdwToastOverlay>("toasts");
    header_ = interface.get<GtkWidget>("header");
    tabBar_ = interface.get<GtkWidget>("tabBar");
    title_ = interface.get<AdwWindowTitle>("title");
    downloadRows_ = interface.get<GtkBox>("downloads");
    menuButton_ = interface.get<GtkMenuButton>("menuButton");
    clusterMenuButton_ = interface.get<GtkMenuButton>("clusterMenuButton");
    menuButtons_ = std::make_unique<MenuButtons>(get(), std::vector{menuButton_, clusterMenuButton_}, menu, [this] {
        auto* const tab = selected();
        return tab ? tab->widget() : nullptr;
    });
    buttons_ =
        std::make_unique<WindowButtons>(interface.get<GtkWidget>("cluster"), interface.get<GtkWidget>("controls"));
    actions_ = std::make_unique<WindowActions>(*this, manager_);
    find_ = std::make_unique<FindBar>(interface, [this] { return selected(); });
    gtk_window_set_application(get(), application);
    connectWindow();
    connectTabs();
}

MainWindow::~MainWindow() {
    connections_.clear();
    gtk_window_destroy(get());
}

void MainWindow::connectWindow() {
    GtkWindow* const window = get();
    const auto notify = [&](const char* property, auto handler) {
        connections_.push_back(connect<void(GtkWindow*, GParamSpec*)>(
            window, property, [handler](GtkWindow*, GParamSpec*) { handler(); }));
    };
    notify("notify::fullscreened", [this] { fullScreenChanged(); });
    notify("notify::is-active", [this] {
        if (isActive()) manager_.becameActive(*this);
    });
    for (const char* property : {"notify::default-width", "notify::default-height", "notify::maximized"}) {
        notify(property, [this] { manager_.scheduleSave(); });
    }
    connections_.push_back(
        connect<void(GtkWidget*)>(GTK_WIDGET(window), "realize", [this](GtkWidget*) { realized(); }));
    connections_.push_back(connect<gboolean(GtkWindow*)>(window, "close-request", [this](GtkWindow*) {
        if (std::exchange(isAsking_, true)) return gboolean{TRUE};
        ClosingTabs::ask(tabs(), [this, weak = std::weak_ptr(alive_)](bool mayClose) {
            if (weak.expired()) return;
            isAsking_ = false;
            if (mayClose) manager_.windowCloses(*this);
        });
        return gboolean{TRUE};
    }));
}

void MainWindow::connectTabs() {
    connections_.push_back(connect<void(AdwTabView*, GParamSpec*)>(
        tabs_, "notify::selected-page", [this](AdwTabView*, GParamSpec*) { selectionChanged(); }));
    connections_.push_back(connect<void(AdwTabView*, AdwTabPage*, int)>(
        tabs_, "page-attached", [this](AdwTabView*, AdwTabPage* page, int) {
            if (auto* const controller = controllerOf(page)) {
                controller->setWindow(this);
                controller->sendFullscreen(isFullScreen());
            }
            updateChrome();
            // Who drags a tab here goes on working here.
            if (adw_tab_view_get_is_transferring_page(tabs_)) present();
            manager_.scheduleSave();
        }));
    connections_.push_back(connect<void(AdwTabView*, AdwTabPage*, int)>(
        tabs_, "page-detached", [this](AdwTabView*, AdwTabPage* page, int) { pageDetached(page); }));
    connections_.push_back(connect<void(AdwTabView*, GParamSpec*)>(
        tabs_, "notify::is-transferring-page", [this](AdwTabView*, GParamSpec*) { transferChanged(); }));
    connections_.push_back(
        connect<void(AdwTabView*, AdwTabPage*)>(tabs_, "setup-menu", [this](AdwTabView*, AdwTabPage* page) {
            auto* const controller = page ? controllerOf(page) : nullptr;
            menuTab_ = controller ? controller->weak_from_this() : std::weak_ptr<MainWindowController>();
            actions_->update();
        }));
    connections_.push_back(connect<void(AdwTabView*, AdwTabPage*, int)>(
        tabs_, "page-reordered", [this](AdwTabView*, AdwTabPage*, int) { manager_.scheduleSave(); }));
    connections_.push_back(
        connect<gboolean(AdwTabView*, AdwTabPage*)>(tabs_, "close-page", [this](AdwTabView* view, AdwTabPage* page) {
            auto* const controller = controllerOf(page);
            if (!controller) {
                adw_tab_view_close_page_finish(view, page, TRUE);
                return gboolean{GDK_EVENT_STOP};
            }
            // While its page is asked the tab may move to another window.
            controller->askToClose([weak = controller->weak_from_this()](bool mayClose) {
                const auto tab = weak.lock();
                if (tab && tab->window()) tab->window()->finishClosing(*tab, mayClose);
            });
            return gboolean{GDK_EVENT_STOP};
        }));
    connections_.push_back(connect<AdwTabView*(AdwTabView*)>(tabs_, "create-window", [this](AdwTabView*) {
        return manager_.windowForTab(*this, WindowPlace::Beside::pointer).tabView();
    }));
}

void MainWindow::append(MainWindowController& controller, Selection selection) {
    controller.setWindow(this);
    AdwTabPage* const page = adw_tab_view_append(tabs_, controller.widget());
    adw_tab_page_set_title(page, controller.title().c_str());
    if (selection == Selection::select) adw_tab_view_set_selected_page(tabs_, page);
}

void MainWindow::select(MainWindowController& controller) {
    if (AdwTabPage* const page = pageOf(controller)) adw_tab_view_set_selected_page(tabs_, page);
}

void MainWindow::closeTab(MainWindowController& controller) {
    if (AdwTabPage* const page = pageOf(controller)) adw_tab_view_close_page(tabs_, page);
}

void MainWindow::finishClosing(MainWindowController& controller, bool mayClose) {
    AdwTabPage* const page = pageOf(controller);
    if (!page) return;
    if (!mayClose) {
        adw_tab_view_close_page_finish(tabs_, page, FALSE);
        return;
    }
    // The window goes with its last tab, and remembers it.
    if (adw_tab_view_get_n_pages(tabs_) == 1) manager_.windowWillClose(*this);
    controller.setWindow(nullptr);
    adw_tab_view_close_page_finish(tabs_, page, TRUE);
    manager_.tabClosed(controller);
}

void MainWindow::closeSelectedTab() {
    if (AdwTabPage* const page = adw_tab_view_get_selected_page(tabs_)) adw_tab_view_close_page(tabs_, page);
}

std::vector<MainWindowController*> MainWindow::tabs() const {
    std::vector<MainWindowController*> result;
    for (int index = 0; index < adw_tab_view_get_n_pages(tabs_); ++index) {
        if (auto* const controller = controllerOf(adw_tab_view_get_nth_page(tabs_, index)))
            result.push_back(controller);
    }
    return result;
}

MainWindowController* MainWindow::selected() const {
    AdwTabPage* const page = adw_tab_view_get_selected_page(tabs_);
    return page ? controllerOf(page) : nullptr;
}

MainWindowController* MainWindow::controllerOf(AdwTabPage* page) const {
    return manager_.controllerOf(adw_tab_page_get_child(page));
}

AdwTabPage* MainWindow::pageOf(const MainWindowController& controller) const {
    return controller.window() == this ? adw_tab_view_get_page(tabs_, controller.widget()) : nullptr;
}

void MainWindow::present() {
    manager_.activation().present(get());
}

void MainWindow::selectionChanged() {
    auto* const controller = selected();
    if (!controller) return;
    find_->hide();
    if (!manager_.isRestoring()) controller->shown();
    pageChanged(*controller);
    updateChrome();
    gtk_widget_grab_focus(controller->widget());
    manager_.becameActive(*this);
    manager_.scheduleSave();
}

void MainWindow::pageDetached(AdwTabPage* page) {
    if (auto* const controller = controllerOf(page); controller && controller->window() == this) {
        controller->setWindow(nullptr);
    }
    // A tab on its way to another window may still come back.
    if (!adw_tab_view_get_is_transferring_page(tabs_)) transferChanged();
    manager_.scheduleSave();
}

void MainWindow::transferChanged() {
    if (adw_tab_view_get_is_transferring_page(tabs_)) return;
    // An emptied window has no purpose.
    if (adw_tab_view_get_n_pages(tabs_) == 0) {
        manager_.windowEmptied(*this);
    } else {
        updateChrome();
    }
}

void MainWindow::selectNext() {
    if (adw_tab_view_select_next_page(tabs_)) return;
    adw_tab_view_set_selected_page(tabs_, adw_tab_view_get_nth_page(tabs_, 0));
}

void MainWindow::selectPrevious() {
    if (adw_tab_view_select_previous_page(tabs_)) return;
    adw_tab_view_set_selected_page(tabs_, adw_tab_view_get_nth_page(tabs_, adw_tab_view_get_n_pages(tabs_) - 1));
}

void MainWindow::moveToNewWindow(MainWindowController& controller) {
    AdwTabPage* const page = pageOf(controller);
    if (!page || adw_tab_view_get_n_pages(tabs_) < 2) return;
    MainWindow& window = manager_.windowForTab(*this, WindowPlace::Beside::thisWindow);
    adw_tab_view_transfer_page(tabs_, page, window.tabs_, 0);
}

void MainWindow::closeOthers(MainWindowController& controller) {
    if (AdwTabPage* const page = pageOf(controller)) adw_tab_view_close_other_pages(tabs_, page);
}

MainWindowController* MainWindow::tabOfMenu() const {
    const auto tab = menuTab_.lock();
    return tab && tab->window() == this ? tab.get() : selected();
}

void MainWindow::show(MainWindowController& controller) {
    select(controller);
    present();
}

void MainWindow::updateChrome() {
    auto* const controller = selected();
    if (!controller) return;
    // Nothing moves under the pointer while a tab is being dragged.
    const bool oneTab = adw_tab_view_get_n_pages(tabs_) == 1 && !adw_tab_view_get_is_transferring_page(tabs_);
    const bool inset = !fullScreen_ && oneTab && controller->wantsInset();
    gtk_widget_set_visible(header_, !inset && !elementFullScreen_);
    gtk_widget_set_visible(tabBar_, !elementFullScreen_);
    if (inset) {
        buttons_->apply(controller->zoom());
    } else {
        buttons_->restore();
    }
    for (auto* const tab : tabs()) tab->sendTitlebar();
    actions_->update();
}

NativeBridge::Titlebar MainWindow::titlebarFor(const MainWindowController& controller) const {
    const bool inset = buttons_->applied() && &controller == selected();
    return NativeBridge::Titlebar{.inset = inset, .buttonsRight = inset ? buttons_->right() : std::nullopt};
}

void MainWindow::pageChanged(const MainWindowController& controller) {
    const std::string title = controller.title();
    if (AdwTabPage* const page = pageOf(controller)) {
        adw_tab_page_set_title(page, title.c_str());
        const auto url = controller.currentURL();
        const CharPtr tooltip(g_markup_escape_text(url ? url->text().c_str() : title.c_str(), -1));
        adw_tab_page_set_tooltip(page, tooltip.get());
    }
    if (&controller != selected()) return;
    actions_->update();
    gtk_window_set_title(get(), title.c_str());
    adw_window_title_set_title(title_, title.c_str());
}

void MainWindow::toggleFullScreen() {
    if (gtk_window_is_fullscreen(get())) {
        gtk_window_unfullscreen(get());
    } else {
        gtk_window_fullscreen(get());
    }
}

void MainWindow::fullScreenChanged() {
    fullScreen_ = gtk_window_is_fullscreen(get());
    for (auto* const tab : tabs()) tab->sendFullscreen(fullScreen_);
    updateChrome();
    manager_.scheduleSave();
}

void MainWindow::setElementFullScreen(bool on) {
    elementFullScreen_ = on;
    updateChrome();
}

/// The window manager reports moves and minimising through the surface only.
void MainWindow::realized() {
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(get()));
    connections_.push_back(connect<void(GdkSurface*, GParamSpec*)>(
        surface, "notify::state", [this](GdkSurface*, GParamSpec*) { manager_.scheduleSave(); }));
    GdkDisplay* const display = gdk_surface_get_display(surface);
    if (!GDK_IS_X11_DISPLAY(display)) return;
    const Window id = gdk_x11_surface_get_xid(surface);
    connections_.push_back(
        connect<gboolean(GdkDisplay*, gpointer)>(display, "xevent", [this, id](GdkDisplay*, gpointer event) {
            const auto* const x = static_cast<const XEvent*>(event);
            if (x->type == ConfigureNotify && x->xconfigure.window == id) manager_.scheduleSave();
            return gboolean{FALSE};
        }));
}

WindowState::Group MainWindow::state() const {
    WindowState::Group group{.frame = place_->text(),
                             .miniaturized = isMinimized(get()),
                             .maximized = gtk_window_is_maximized(get()) != FALSE};
    const auto* const front = selected();
    for (const auto* const tab : tabs()) {
        const auto url = tab->currentURL();
        if (!url) continue;
        if (tab == front) group.selected = static_cast<std::int64_t>(group.tabs.size());
        group.tabs.push_back(url->text());
    }
    return group;
}

void MainWindow::titlebarDoubleClick() {
    const Preferences& preferences = manager_.preferences();
    CharPtr desktopSetting;
    g_object_get(gtk_widget_get_settings(GTK_WIDGET(get())), "gtk-titlebar-double-click", desktopSetting.out(),
                 nullptr);
    switch (parvela::titlebarDoubleClick(preferences.titlebarDoubleClickAction(),
                                         preferences.titlebarDoubleClickMinimizes(),
                                         desktopSetting ? desktopSetting.get() : "")) {
        case TitlebarAction::zoom:
            place_->toggleMaximized();
            break;
        case TitlebarAction::fill:
            place_->toggleFill();
            break;
        case TitlebarAction::minimize:
            gtk_window_minimize(get());
            break;
        case TitlebarAction::none:
            break;
    }
}

void MainWindow::showMenu() {
    gtk_menu_button_popup(buttons_->applied() ? clusterMenuButton_ : menuButton_);
}

void MainWindow::showFindBar() {
    find_->show();
}

void MainWindow::showToast(const std::string& text) {
    const CharPtr escaped(g_markup_escape_text(text.c_str(), -1));
    AdwToast* const toast = adw_toast_new(escaped.get());
    adw_toast_overlay_add_toast(toasts_, toast);
}

}  // namespace parvela
