#pragma once

#include "Model/AppModel.h"
#include "Support/WindowActivation.h"
#include "Web/Downloads.h"
#include "Web/PaintWatch.h"
#include "Web/WebBridge.h"
#include "Web/WebEnvironment.h"
#include "Windows/LostTabDrops.h"
#include "Windows/MainWindow.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Url.h>
#include <ParvelaKit/WindowState.h>
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
class MainWindowController;

/// Owns all main windows and their tabs, and what their web views share. Remembers which window was active last.
class WindowManager {
public:
    WindowManager(GtkApplication* application, std::shared_ptr<AppModel> model, DesktopServices& desktop,
                  const std::shared_ptr<NotificationCentre>& notifications, std::shared_ptr<const Clock> clock,
                  const XdgPaths& paths);
    WindowManager(const WindowManager&) = delete;
    WindowManager& operator=(const WindowManager&) = delete;
    ~WindowManager();

    WebEnvironment& web() noexcept { return web_; }
    Downloads& downloads() noexcept { return downloads_; }
    WebBridge& bridge() noexcept { return bridge_; }
    DesktopServices& desktop() noexcept { return desktop_; }
    /// Where surfaces outside the windows say that the user wants to see one.
    WindowActivation& activation() noexcept { return activation_; }
    const Preferences& preferences() const { return model_->session.prefs(); }
    const ServerConfig& server() const { return model_->server.get(); }
    const std::shared_ptr<const Clock>& clock() const noexcept { return clock_; }

    /// What the menu buttons of windows show. To be set before the first window opens; outlives the manager.
    void setMenu(GMenuModel* menu) noexcept { menu_ = menu; }
    /// What pages learn about this device. Pages wait for it.
    void setDevice(std::string id, std::string name);
    /// Makes the native info script anew, for pages loaded from now on.
    void rebuildNativeInfoScript();

    /// Opens a window with one tab, at `url` or at the web app's start page.
    MainWindow& openWindow(const std::optional<Url>& url = std::nullopt);
    /// Opens a tab in `window`, or in a new window when there is none.
    MainWindowController& openTab(MainWindow* window, const std::optional<Url>& url = std::nullopt);
    /// A tab beside `controller` for a page that asked for a window; the engine loads it. None when that is not
    /// possible.
    WebKitWebView* openTabFor(MainWindowController& controller, WebKitWebView* opener);
    /// A tab beside `controller` that does not come to the front.
    void openBackgroundTab(MainWindowController& controller, const Url& url);
    /// Brings the window that was active last to the front; reopens the saved ones or opens one when there is none.
    MainWindow& showMainWindow();

    /// Raises all windows, the one that was active last on top.
    void presentAll();

    enum class Show { now, later };
    /// Reads the windows of the last launch. Unless they are shown later, the page that will be in front begins to
    /// load: its process takes longer to start than all else at launch.
    void prepare(Show show);
    /// Reopens the windows that were read, or opens a fresh one: now, or when one is asked for, as was said to
    /// prepare().
    void restore();
    bool isRestoring() const noexcept { return restoring_; }

    /// The tab in front of the window that was active last; none without a window.
    MainWindowController* frontController() const;
    MainWindow* frontWindow() const;
    MainWindowController* controllerOf(GtkWidget* tabChild) const;
    const std::vector<std::unique_ptr<MainWindow>>& windows() const noexcept { return windows_; }

    /// At least one page has said that it draws the title bar area itself.
    void pagesSupportShell() noexcept { doPagesSupportShell_ = true; }
    bool doPagesSupportShell() const noexcept { return doPagesSupportShell_; }

    /// Asks the page for its form for a new task; quick add opens when the page does not take it.
    void newTask(MainWindowController& tab);
    /// The same in the window in front, which comes to be seen.
    void newTaskInFront();
    /// The native fallback of newTask().
    std::function<void()> onQuickAdd;
    /// Applies a zoom and remembers it for new windows.
    void setZoom(MainWindowController& tab, double zoom);
    /// The same for every tab.
    void setZoomEverywhere(double zoom);

    /// This tab waits for a sign-in that goes on in the browser; it takes the place of any other.
    void waitForSignIn(MainWindowController& tab);
    /// The tab that waits, which then waits no more; none when it has gone.
    std::shared_ptr<MainWindowController> takeSignInTab();

    void boardsChanged(const MainWindowController& controller);
    std::function<void()> onBoardsChanged;
    /// Called when a page has loaded in front of the user and is not drawn. Not set: nobody watches.
    std::function<void()> onNothingDrawn;
    /// A page wants to show a notification.
    std::function<void(MainWindowController& tab, WebKitNotification* notification)> onPageNotification;
    /// Called after the last window has gone.
    std::function<void()> onLastWindowClosed;

    /// Saves the windows and tabs soon, once for a burst of calls.
    void scheduleSave();
    /// Asks all pages whether they may be closed, as far as they have something to lose. `agreed` is called when all
    /// may.
    void askToCloseAll(std::function<void()> agreed);
    void saveNow();

    // From the windows.
    void becameActive(MainWindow& window);
    void windowWillClose(MainWindow& window);
    void windowCloses(MainWindow& window);
    void windowEmptied(MainWindow& window);
    void tabClosed(MainWindowController& controller);
    /// A window for a tab that leaves `source`.
    MainWindow& windowForTab(const MainWindow& source, WindowPlace::Beside place);
    /// Closes a tab once the engine's callbacks have returned.
    void closeSoon(MainWindowController& controller);

private:
    MainWindowController& makeController(WebKitWebView* related);
    MainWindowController& makeLoading(const Url& url);
    MainWindow& makeWindow(const std::optional<WindowFrame>& frame);
    void openGroup(const WindowState::Group& group);
    void readDictionaries();
    void openPending();
    static std::size_t selectedIndexOf(const WindowState::Group& group);
    Url urlOf(const WindowState::Group& group, std::size_t index) const;
    Url startURL() const;
    void tellNotificationPermissions() const;
    void forget(MainWindow& window);
    void forget(MainWindowController& controller);

    GtkApplication* application_;
    std::shared_ptr<AppModel> model_;
    DesktopServices& desktop_;
    WindowActivation activation_;
    std::shared_ptr<const Clock> clock_;
    WebEnvironment web_;
    WebBridge bridge_;
    Downloads downloads_;
    LostTabDrops lostDrops_;
    std::optional<std::string> deviceId_;
    std::string deviceName_;
    std::vector<std::shared_ptr<MainWindowController>> controllers_;
    std::vector<std::unique_ptr<MainWindow>> windows_;
    MainWindow* lastActive_ = nullptr;
    bool doPagesSupportShell_ = false;
    bool restoring_ = false;
    Show show_ = Show::now;
    std::vector<WindowState::Group> pendingGroups_;
    /// Begun by prepare(), for the first window.
    std::shared_ptr<MainWindowController> prepared_;
    std::weak_ptr<MainWindowController> waitsForSignIn_;
    GMenuModel* menu_ = nullptr;
    MainLoopTimer save_;
    MainLoopTimer spelling_;
    bool readsDictionaries_ = false;
    gint64 saveWantedAt_ = 0;  ///< g_get_monotonic_time() of the first change that is not saved yet
    bool isAsking_ = false;
    std::unique_ptr<PaintWatch> paintWatch_;
    Connection notificationPermissions_;
    Subscription stopTimer_;
    Subscription serverChanged_;
    Subscription linkInfoChanged_;
    // Windows and tabs end inside callbacks of theirs; they go once those have returned.
    std::vector<std::unique_ptr<MainWindow>> closedWindows_;
    std::vector<std::shared_ptr<MainWindowController>> closedControllers_;
    MainLoopTimer sweep_;
};

}  // namespace parvela
