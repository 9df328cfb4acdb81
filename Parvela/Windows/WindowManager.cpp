#include "Windows/WindowManager.h"

#include "Windows/ClosingTabs.h"
#include "Windows/MainWindowController.h"

#include <ParvelaKit/ContentFilter.h>

#include <algorithm>
#include <utility>

namespace parvela {

namespace {

constexpr std::chrono::milliseconds saveDelay{500};
/// A change that is followed by others all the time is saved after this.
constexpr gint64 longestSaveDelay = 10 * G_TIME_SPAN_SECOND;

}  // namespace

WindowManager::WindowManager(GtkApplication* application, std::shared_ptr<AppModel> model, DesktopServices& desktop,
                             const std::shared_ptr<NotificationCentre>& notifications,
                             std::shared_ptr<const Clock> clock, const XdgPaths& paths)
    : application_(application),
      model_(std::move(model)),
      desktop_(desktop),
      clock_(std::move(clock)),
      web_(paths),
      bridge_(model_, *this),
      downloads_(web_.session(), paths.downloads),
      lostDrops_([this] {
          return std::ranges::any_of(windows_, [](const auto& window) {
              return adw_tab_view_get_is_transferring_page(window->tabView()) != FALSE;
          });
      }) {
    downloads_.rowsFor = [this](WebKitWebView* view) {
        const auto* const tab = view ? controllerOf(GTK_WIDGET(view)) : nullptr;
        const MainWindow* const window = tab && tab->window() ? tab->window() : frontWindow();
        return window ? window->downloadRows() : nullptr;
    };
    downloads_.onStarted = [this](WebKitWebView* view) {
        // A tab that was opened for nothing but the download has no page to show.
        auto* const tab = view ? controllerOf(GTK_WIDGET(view)) : nullptr;
        if (tab && !tab->hasCommitted()) closeSoon(*tab);
    };
    web_.setContentFilter(contentFilterRules(model_->server.get()));
    serverChanged_ = model_->server.observe(
        [this](const ServerConfig& server) { web_.setContentFilter(contentFilterRules(server)); });
    linkInfoChanged_ = model_->linkInfo.observe([this](const auto&) { rebuildNativeInfoScript(); });
    notificationPermissions_ =
        connect<void(WebKitWebContext*)>(web_.context(), "initialize-notification-permissions",
                                         [this](WebKitWebContext*) { tellNotificationPermissions(); });
    stopTimer_ = notifications->stopTimer.observe([this] {
        const auto& timer = model_->timer.get();
        if (!timer) return;
        // Only a page can stop it.
        if (!frontController()) showMainWindow();
        if (auto* const tab = frontController()) tab->tell(NativeBridge::StopTimer{timer->taskKey});
    });
}

WindowManager::~WindowManager() {
    windows_.clear();
    closedWindows_.clear();
    controllers_.clear();
    closedControllers_.clear();
}

/// The engine asks when a page wants to know whether it may notify.
void WindowManager::tellNotificationPermissions() const {
    const std::string origin = ServerConfig::origin(model_->server.get().appURL);
    const auto answer = PagePermissions::remembered(preferences(), origin, "notifications");
    if (!answer) return;
    WebKitSecurityOrigin* const known = webkit_security_origin_new_for_uri(origin.c_str());
    GList* const list = g_list_prepend(nullptr, known);
    webkit_web_context_initialize_notification_permissions(web_.context(), *answer ? list : nullptr,
                                                           *answer ? nullptr : list);
    g_list_free(list);
    webkit_security_origin_unref(known);
}

void WindowManager::setDevice(std::string id, std::string name) {
    deviceId_ = std::move(id);
    deviceName_ = std::move(name);
    rebuildNativeInfoScript();
}

void WindowManager::rebuildNativeInfoScript() {
    if (!deviceId_) return;
    const auto& link = model_->linkInfo.get();
    web_.setNativeInfoScript(NativeBridge::nativeInfoScript(NativeBridge::Info{
        .deviceId = *deviceId_,
        .deviceName = deviceName_,
        .linkedWorkspaceId = link ? link->workspaceId : std::nullopt,
    }));
}

MainWindowController& WindowManager::makeController(WebKitWebView* related) {
    MainWindowController& tab =
        *controllers_.emplace_back(std::make_shared<MainWindowController>(*this, model_, related));
    tab.webView().onFirstKey = [this] { readDictionaries(); };
    if (onNothingDrawn && !paintWatch_) paintWatch_ = std::make_unique<PaintWatch>(tab.webView().get(), onNothingDrawn);
    return tab;
}

/// They take megabytes and as long as building a window: not for those who only read, and not before the key has
/// arrived.
void WindowManager::readDictionaries() {
    if (std::exchange(readsDictionaries_, true)) return;
    spelling_ = MainLoopTimer(std::chrono::milliseconds{0},
                              [this] { web_.setSpellChecking(SpellChecking::from(preferences())); });
}

MainWindow& WindowManager::makeWindow(const std::optional<WindowFrame>& frame) {
    MainWindow& window = *windows_.emplace_back(std::make_unique<MainWindow>(*this, application_, menu_));
    if (frame) window.place().set(*frame);
    return window;
}

/// A tab that loads a page: the one that was prepared, or a new one.
MainWindowController& WindowManager::makeLoading(const Url& url) {
    const auto prepared = std::exchange(prepared_, nullptr);
    MainWindowController& tab = prepared ? *prepared : makeController(nullptr);
    if (tab.currentURL() != url) tab.load(url);
    return tab;
}

MainWindow& WindowManager::openWindow(const std::optional<Url>& url) {
    // Windows that cover each other exactly look like one.
    const MainWindow* const front = frontWindow();
    const auto beside =
        front && front->isVisible() ? front->place().beside(WindowPlace::Beside::thisWindow) : std::nullopt;
    const auto frame = beside ? beside : newWindowFrame(preferences());
    // The page's process starts while the window is built.
    MainWindowController& tab = makeLoading(url.value_or(model_->server.get().appURL));
    MainWindow& window = makeWindow(frame);
    window.append(tab, MainWindow::Selection::select);
    window.present();
    return window;
}

/// Where the user left off, as far as a window may show it.
Url WindowManager::startURL() const {
    const ServerConfig& server = model_->server.get();
    const auto stored = preferences().lastURL();
    const auto last = stored ? Url::parse(*stored) : std::nullopt;
    return last && server.isAppOrigin(*last) ? *last : server.appURL;
}

void WindowManager::prepare(Show show) {
    show_ = show;
    const auto stored = preferences().windowState();
    const auto state = stored ? WindowState::fromJson(stored->bytes) : std::nullopt;
    if (state) pendingGroups_ = state->restorable(model_->server.get()).groups;
    if (show == Show::later) return;
    MainWindowController& tab = makeController(nullptr);
    if (pendingGroups_.empty()) {
        tab.load(startURL());
    } else {
        tab.load(urlOf(pendingGroups_.front(), selectedIndexOf(pendingGroups_.front())));
    }
    prepared_ = tab.shared_from_this();
}

void WindowManager::restore() {
    if (show_ == Show::now) showMainWindow();
}

/// A saved window has at least the tab that it shows.
std::size_t WindowManager::selectedIndexOf(const WindowState::Group& group) {
    return std::cmp_less(group.selected, group.tabs.size()) && group.selected > 0
               ? static_cast<std::size_t>(group.selected)
               : 0;
}

Url WindowManager::urlOf(const WindowState::Group& group, std::size_t index) const {
    const auto url = index < group.tabs.size() ? Url::parse(group.tabs[index]) : std::nullopt;
    return url.value_or(model_->server.get().appURL);
}

void WindowManager::openPending() {
    restoring_ = true;
    for (const WindowState::Group& group : std::exchange(pendingGroups_, {})) openGroup(group);
    restoring_ = false;
}

void WindowManager::openGroup(const WindowState::Group& group) {
    const std::size_t selectedIndex = selectedIndexOf(group);
    // The page's process starts while the window and the other tabs are built.
    MainWindowController& selected = makeLoading(urlOf(group, selectedIndex));
    MainWindow& window = makeWindow(WindowFrame::parse(group.frame));
    for (std::size_t index = 0; index < std::max<std::size_t>(1, group.tabs.size()); ++index) {
        if (index == selectedIndex) {
            window.append(selected, MainWindow::Selection::keep);
            continue;
        }
        MainWindowController& tab = makeController(nullptr);
        tab.loadWhenShown(urlOf(group, index));
        window.append(tab, MainWindow::Selection::keep);
    }
    window.select(selected);
    if (group.maximized) gtk_window_maximize(window.get());
    window.present();
    if (group.miniaturized) gtk_window_minimize(window.get());
}

void WindowManager::saveNow() {
    save_.reset();
    if (restoring_) return;
    WindowState state;
    for (const auto& window : windows_) state.groups.push_back(window->state());
    state.groups.insert(state.groups.end(), pendingGroups_.begin(), pendingGroups_.end());
    preferences().setWindowState(Data{state.json()});
}

void WindowManager::scheduleSave() {
    if (restoring_) return;
    const gint64 now = g_get_monotonic_time();
    if (!save_.isActive()) saveWantedAt_ = now;
    if (save_.isActive() && now - saveWantedAt_ >= longestSaveDelay) return;
    save_ = MainLoopTimer(saveDelay, [this] { saveNow(); });
}

void WindowManager::askToCloseAll(std::function<void()> agreed) {
    if (std::exchange(isAsking_, true)) return;
    std::vector<MainWindowController*> tabs;
    for (const auto& controller : controllers_) tabs.push_back(controller.get());
    ClosingTabs::ask(tabs, [this, agreed = std::move(agreed)](bool mayClose) {
        isAsking_ = false;
        if (mayClose) agreed();
    });
}

void WindowManager::newTask(MainWindowController& tab) {
    tab.tell(NativeBridge::NewTask{}, [quickAdd = onQuickAdd] {
        if (quickAdd) quickAdd();
    });
}

void WindowManager::newTaskInFront() {
    showMainWindow();
    if (auto* const tab = frontController()) newTask(*tab);
}

void WindowManager::setZoom(MainWindowController& tab, double zoom) {
    tab.setZoom(zoom);
    preferences().setPageZoom(zoom);
}

void WindowManager::setZoomEverywhere(double zoom) {
    for (const auto& controller : controllers_) controller->setZoom(zoom);
    preferences().setPageZoom(zoom);
}

void WindowManager::waitForSignIn(MainWindowController& tab) {
    waitsForSignIn_ = tab.weak_from_this();
}

std::shared_ptr<MainWindowController> WindowManager::takeSignInTab() {
    return std::exchange(waitsForSignIn_, {}).lock();
}

MainWindowController& WindowManager::openTab(MainWindow* window, const std::optional<Url>& url) {
    if (!window) return *openWindow(url).selected();
    MainWindowController& controller = makeController(nullptr);
    controller.load(url.value_or(model_->server.get().appURL));
    window->append(controller, MainWindow::Selection::select);
    return controller;
}

WebKitWebView* WindowManager::openTabFor(MainWindowController& controller, WebKitWebView* opener) {
    if (!controller.window()) return nullptr;
    MainWindowController& tab = makeController(opener);
    controller.window()->append(tab, MainWindow::Selection::select);
    return tab.webView().get();
}

void WindowManager::openBackgroundTab(MainWindowController& controller, const Url& url) {
    if (!controller.window()) return;
    MainWindowController& tab = makeController(nullptr);
    tab.load(url);
    controller.window()->append(tab, MainWindow::Selection::keep);
}

MainWindow& WindowManager::showMainWindow() {
    if (windows_.empty() && !pendingGroups_.empty()) openPending();
    MainWindow* const window = frontWindow();
    if (!window) return openWindow(startURL());
    window->present();
    return *window;
}

void WindowManager::presentAll() {
    MainWindow* const front = frontWindow();
    for (const auto& window : windows_) {
        if (window.get() != front) window->present();
    }
    if (front) front->present();
}

MainWindow* WindowManager::frontWindow() const {
    if (lastActive_) return lastActive_;
    return windows_.empty() ? nullptr : windows_.back().get();
}

MainWindowController* WindowManager::frontController() const {
    const MainWindow* const window = frontWindow();
    return window ? window->selected() : nullptr;
}

MainWindowController* WindowManager::controllerOf(GtkWidget* tabChild) const {
    const auto found = std::ranges::find(controllers_, tabChild, [](const auto& one) { return one->widget(); });
    return found == controllers_.end() ? nullptr : found->get();
}

void WindowManager::boardsChanged(const MainWindowController& controller) {
    if (&controller == frontController() && onBoardsChanged) onBoardsChanged();
}

void WindowManager::becameActive(MainWindow& window) {
    lastActive_ = &window;
    if (onBoardsChanged) onBoardsChanged();
}

void WindowManager::windowWillClose(MainWindow& window) {
    const auto* const controller = window.selected();
    const auto url = controller ? controller->currentURL() : std::nullopt;
    if (url) preferences().setLastURL(url->text());
    preferences().setLastWindowFrame(window.place().text());
}

void WindowManager::windowCloses(MainWindow& window) {
    windowWillClose(window);
    for (auto* const tab : window.tabs()) {
        tab->setWindow(nullptr);
        forget(*tab);
    }
    forget(window);
}

void WindowManager::windowEmptied(MainWindow& window) {
    forget(window);
}

void WindowManager::tabClosed(MainWindowController& controller) {
    forget(controller);
}

MainWindow& WindowManager::windowForTab(const MainWindow& source, WindowPlace::Beside place) {
    MainWindow& window = makeWindow(source.place().beside(place));
    window.present();
    return window;
}

void WindowManager::closeSoon(MainWindowController& controller) {
    runSoon([weak = controller.weak_from_this()] {
        const auto tab = weak.lock();
        if (!tab || !tab->window()) return;
        tab->agreeToClose();
        tab->window()->closeTab(*tab);
    });
}

void WindowManager::forget(MainWindow& window) {
    if (lastActive_ == &window) lastActive_ = nullptr;
    const auto found = std::ranges::find(windows_, &window, &std::unique_ptr<MainWindow>::get);
    if (found == windows_.end()) return;
    gtk_widget_set_visible(GTK_WIDGET(window.get()), FALSE);
    closedWindows_.push_back(std::move(*found));
    windows_.erase(found);
    scheduleSave();
    sweep_ = MainLoopTimer(std::chrono::milliseconds{0}, [this] {
        closedWindows_.clear();
        closedControllers_.clear();
        if (windows_.empty() && onLastWindowClosed) onLastWindowClosed();
    });
}

void WindowManager::forget(MainWindowController& controller) {
    const auto found = std::ranges::find(controllers_, &controller, &std::shared_ptr<MainWindowController>::get);
    if (found == controllers_.end()) return;
    closedControllers_.push_back(std::move(*found));
    controllers_.erase(found);
    scheduleSave();
    if (!sweep_.isActive()) {
        sweep_ = MainLoopTimer(std::chrono::milliseconds{0}, [this] { closedControllers_.clear(); });
    }
}

}  // namespace parvela
