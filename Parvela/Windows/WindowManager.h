#pragma once

#include "Model/AppModel.h"
#include "Web/WebBridge.h"
#include "Web/WebEnvironment.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Url.h>
#include <Platform/MainLoop.h>
#include <Platform/XdgPaths.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

class DesktopServices;
class MainWindow;
class MainWindowController;

/// Owns all main windows and their tabs, and what their web views share. Remembers which window was active last.
class WindowManager {
public:
    WindowManager(GtkApplication* application, std::shared_ptr<AppModel> model, DesktopServices& desktop,
                  std::shared_ptr<const Clock> clock, const XdgPaths& paths);
    WindowManager(const WindowManager&) = delete;
    WindowManager& operator=(const WindowManager&) = delete;
    ~WindowManager();

    WebEnvironment& web() noexcept { return web_; }
    WebBridge& bridge() noexcept { return bridge_; }
    DesktopServices& desktop() noexcept { return desktop_; }
    const std::shared_ptr<const Clock>& clock() const noexcept { return clock_; }

    /// What pages learn about this device. Pages wait for it.
    void setDevice(std::string id, std::string name);
    /// Makes the native info script anew, for pages loaded from now on.
    void rebuildNativeInfoScript();

    /// Opens a window with one tab, at `url` or at the web app's start page.
    MainWindow& openWindow(std::optional<Url> url = std::nullopt);
    /// Opens a tab in `window`, or in a new window when there is none.
    MainWindowController& openTab(MainWindow* window, std::optional<Url> url = std::nullopt);
    /// A tab beside `controller` for a page that asked for a window; the engine loads it. None when that is not
    /// possible.
    WebKitWebView* openTabFor(MainWindowController& controller, WebKitWebView* opener);
    /// Brings the window that was active last to the front, or opens one.
    MainWindow& showMainWindow();

    /// The tab in front of the window that was active last; none without a window.
    MainWindowController* frontController() const;
    MainWindow* frontWindow() const;
    MainWindowController* controllerOf(GtkWidget* tabChild) const;
    const std::vector<std::unique_ptr<MainWindow>>& windows() const noexcept { return windows_; }

    /// At least one page has said that it draws the title bar area itself.
    void pagesSupportShell() noexcept { doPagesSupportShell_ = true; }
    bool doPagesSupportShell() const noexcept { return doPagesSupportShell_; }

    void boardsChanged(const MainWindowController& controller);
    std::function<void()> onBoardsChanged;
    /// Called after the last window has gone.
    std::function<void()> onLastWindowClosed;

    void scheduleSave();

    // From the windows.
    void becameActive(MainWindow& window);
    void windowWillClose(MainWindow& window);
    void windowCloses(MainWindow& window);
    void windowEmptied(MainWindow& window);
    void tabClosed(MainWindowController& controller);
    MainWindow& windowForTornTab();
    /// Closes a tab once the engine's callbacks have returned.
    void closeSoon(MainWindowController& controller);

private:
    MainWindowController& makeController(WebKitWebView* related);
    void forget(MainWindow& window);
    void forget(MainWindowController& controller);

    GtkApplication* application_;
    std::shared_ptr<AppModel> model_;
    DesktopServices& desktop_;
    std::shared_ptr<const Clock> clock_;
    WebEnvironment web_;
    WebBridge bridge_;
    std::optional<std::string> deviceId_;
    std::string deviceName_;
    std::vector<std::shared_ptr<MainWindowController>> controllers_;
    std::vector<std::unique_ptr<MainWindow>> windows_;
    MainWindow* lastActive_ = nullptr;
    bool doPagesSupportShell_ = false;
    Subscription serverChanged_;
    // Windows and tabs end inside callbacks of theirs; they go once those have returned.
    std::vector<std::unique_ptr<MainWindow>> closedWindows_;
    std::vector<std::shared_ptr<MainWindowController>> closedControllers_;
    MainLoopTimer sweep_;
};

}  // namespace parvela
