#pragma once

#include "Model/AppModel.h"
#include "Web/BrowserDelegate.h"
#include "Web/ParvelaWebView.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/NativeBridge.h>
#include <ParvelaKit/Url.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

class MainWindow;
class WindowManager;

/// One tab of a main window: a web view with the web app, what the page said about itself, and what menus can ask of
/// it.
///
/// Owned by the window manager; the tab's window changes when the user drags the tab into another one.
class MainWindowController : public std::enable_shared_from_this<MainWindowController> {
public:
    /// `related` is the view whose page asked for this tab, none for the user's own.
    MainWindowController(WindowManager& manager, std::shared_ptr<AppModel> model, WebKitWebView* related);
    MainWindowController(const MainWindowController&) = delete;
    MainWindowController& operator=(const MainWindowController&) = delete;
    ~MainWindowController();

    ParvelaWebView& webView() noexcept { return webView_; }
    const ParvelaWebView& webView() const noexcept { return webView_; }
    BrowserDelegate& browser() noexcept { return browser_; }
    /// What the tab shows.
    GtkWidget* widget() const noexcept { return webView_.widget(); }

    MainWindow* window() const noexcept { return window_; }
    void setWindow(MainWindow* window) noexcept { window_ = window; }

    /// Loads the page as soon as pages may load.
    void load(const Url& url);
    /// The same, but not before the tab is shown for the first time.
    void loadWhenShown(Url url);
    /// To be called whenever the tab is shown.
    void shown();
    enum class Cache { use, bypass };
    void reload(Cache cache);
    /// The page in the view, or the one that it will load; none for a view that stays empty.
    std::optional<Url> currentURL() const;

    /// Finds out whether the tab may be closed. `answer` is called once, at once or later, unless the tab goes before.
    void askToClose(std::function<void(bool mayClose)> answer);
    /// The tab is closed without a question.
    void agreeToClose() { browser_.closing().agree(); }

    /// Some page has appeared in the view.
    bool hasCommitted() const noexcept { return hasCommitted_; }

    /// Opens a page of the web app: the page's own router when it takes the path, else a load.
    void openPath(std::string_view pathAndQuery);
    void openPage(const Url& url);

    /// Sends the event to the page, once. While none has loaded, it waits for one, up to half a minute. `otherwise` is
    /// called when no page takes it; without it nobody asks. It must hold no raw pointer that may dangle.
    void tell(NativeBridge::Event event, std::function<void()> otherwise = nullptr);

    /// The page posted `shell`: it draws the window's title bar area by itself.
    void pageSupportsShell();
    bool supportsShell() const noexcept { return shell_ == ShellSupport::yes; }
    /// Whether the page can do without a title bar, as far as is known while it loads.
    bool wantsInset() const;
    void setBoards(std::vector<BoardRef> boards);
    const std::vector<BoardRef>& boards() const noexcept { return boards_; }

    /// The page posted `windowDrag`.
    void windowDrag();
    /// The page posted `titlebarDoubleClick`.
    void titlebarDoubleClick();

    /// Tells the page how the window looks now. Silent while nothing changed since the last time.
    void sendTitlebar();
    /// The same for full screen.
    void sendFullscreen(bool on);

    /// The page's zoom, 0.5 to 3.
    double zoom() const;
    void setZoom(double zoom);

    /// "Parvela" until the page has a title.
    std::string title() const;

private:
    enum class ShellSupport { unknown, yes, no };

    struct Untold {
        NativeBridge::Event event;
        std::function<void()> otherwise;
    };
    void tellUntold();
    void committed();
    void finished();

    WindowManager& manager_;
    std::shared_ptr<AppModel> model_;
    ParvelaWebView webView_;
    BrowserDelegate browser_;
    MainWindow* window_ = nullptr;
    std::vector<Connection> connections_;
    MainLoopTimer shellPatience_;
    std::vector<Untold> untold_;
    MainLoopTimer untoldPatience_;
    std::optional<Url> pending_;    ///< to load when shown
    std::optional<Url> requested_;  ///< loading now or next
    std::int64_t loadedServerRevision_ = 0;
    std::vector<BoardRef> boards_;
    bool hasCommitted_ = false;
    const bool isPagesOwn_;  ///< opened by a page, which may close it too
    ShellSupport shell_ = ShellSupport::unknown;
    std::optional<NativeBridge::Titlebar> sentTitlebar_;
    std::optional<bool> sentFullscreen_;
    Subscription serverChanged_;
};

}  // namespace parvela
