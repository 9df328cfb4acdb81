#pragma once

#include "Windows/FindBar.h"
#include "Windows/MenuButtons.h"
#include "Windows/WindowActions.h"
#include "Windows/WindowButtons.h"
#include "Windows/WindowPlace.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/NativeBridge.h>
#include <ParvelaKit/WindowState.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

class MainWindowController;
class WindowManager;

/// A window with one tab or more. With one tab whose page draws the header itself there is no title bar: the page fills
/// the window and the buttons float in the page's header. Otherwise a header bar and, with two tabs, a tab bar stand
/// above.
class MainWindow {
public:
    /// `menu` is what the menu button shows.
    MainWindow(WindowManager& manager, GtkApplication* application, GMenuModel* menu);
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;
    ~MainWindow();

    GtkWindow* get() const noexcept { return GTK_WINDOW(window_.get()); }
    AdwTabView* tabView() const noexcept { return tabs_; }

    /// Takes the tab in, at the end.
    enum class Selection { keep, select };
    void append(MainWindowController& controller, Selection selection);
    void select(MainWindowController& controller);
    /// Removes a tab once its page agrees; the window closes with its last one.
    void closeTab(MainWindowController& controller);
    void closeSelectedTab();
    /// Brings the tab in front of its user.
    void show(MainWindowController& controller);
    /// Gives a tab a window of its own.
    void moveToNewWindow(MainWindowController& controller);
    void closeOthers(MainWindowController& controller);
    /// After the last tab comes the first.
    void selectNext();
    void selectPrevious();
    /// The tab whose own menu is open; else the one in front.
    MainWindowController* tabOfMenu() const;
    /// In tab order.
    std::vector<MainWindowController*> tabs() const;
    MainWindowController* selected() const;

    void present();
    bool isActive() const { return gtk_window_is_active(get()); }
    bool isFullScreen() const noexcept { return fullScreen_; }
    bool isVisible() const { return gtk_widget_get_visible(GTK_WIDGET(window_.get())); }

    /// Decides anew between title bar and page header, and tells the page.
    void updateChrome();
    /// Title or address of a tab changed.
    void pageChanged(const MainWindowController& controller);
    NativeBridge::Titlebar titlebarFor(const MainWindowController& controller) const;

    /// What is remembered of this window.
    WindowState::Group state() const;
    WindowPlace& place() const noexcept { return *place_; }

    void titlebarDoubleClick();
    void toggleFullScreen();
    void showMenu();
    /// The widget that commands of editing are meant for; may be null.
    GtkWidget* focus() const { return menuButtons_->focus(); }
    void showFindBar();
    /// A video or the like takes the whole screen: nothing of the window stays in sight.
    void setElementFullScreen(bool on);

    void showToast(const std::string& text);
    /// Where downloads show their progress.
    GtkBox* downloadRows() const noexcept { return downloadRows_; }

private:
    void connectWindow();
    void connectTabs();
    void fullScreenChanged();
    void selectionChanged();
    void pageDetached(AdwTabPage* page);
    void transferChanged();
    void finishClosing(MainWindowController& controller, bool mayClose);
    void realized();
    MainWindowController* controllerOf(AdwTabPage* page) const;
    AdwTabPage* pageOf(const MainWindowController& controller) const;

    WindowManager& manager_;
    Ref<AdwApplicationWindow> window_;
    AdwTabView* tabs_ = nullptr;
    AdwToastOverlay* toasts_ = nullptr;
    GtkWidget* header_ = nullptr;
    GtkWidget* tabBar_ = nullptr;
    AdwWindowTitle* title_ = nullptr;
    GtkBox* downloadRows_ = nullptr;
    GtkMenuButton* menuButton_ = nullptr;
    GtkMenuButton* clusterMenuButton_ = nullptr;
    std::unique_ptr<WindowPlace> place_;
    std::unique_ptr<MenuButtons> menuButtons_;
    std::unique_ptr<WindowButtons> buttons_;
    std::unique_ptr<WindowActions> actions_;
    std::unique_ptr<FindBar> find_;
    std::vector<Connection> connections_;
    bool fullScreen_ = false;
    bool elementFullScreen_ = false;
    bool isAsking_ = false;  ///< the pages are asked whether the window may be closed
    std::weak_ptr<MainWindowController> menuTab_;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

}  // namespace parvela
