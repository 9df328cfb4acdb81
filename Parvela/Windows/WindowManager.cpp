#include "Windows/WindowManager.h"

#include "Windows/MainWindow.h"
#include "Windows/MainWindowController.h"

#include <ParvelaKit/ContentFilter.h>

#include <algorithm>
#include <utility>

namespace parvela {

WindowManager::WindowManager(GtkApplication* application, std::shared_ptr<AppModel> model, DesktopServices& desktop,
                             std::shared_ptr<const Clock> clock, const XdgPaths& paths)
    : application_(application),
      model_(std::move(model)),
      desktop_(desktop),
      clock_(std::move(clock)),
      web_(paths),
      bridge_(model_, *this) {
    web_.setContentFilter(contentFilterRules(model_->server.get()));
    serverChanged_ = model_->server.observe(
        [this](const ServerConfig& server) { web_.setContentFilter(contentFilterRules(server)); });
}

WindowManager::~WindowManager() {
    windows_.clear();
    closedWindows_.clear();
    controllers_.clear();
    closedControllers_.clear();
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
    return *controllers_.emplace_back(std::make_shared<MainWindowController>(*this, model_, related));
}

MainWindow& WindowManager::openWindow(std::optional<Url> url) {
    MainWindow& window = *windows_.emplace_back(std::make_unique<MainWindow>(*this, application_));
    openTab(&window, std::move(url));
    window.present();
    return window;
}

MainWindowController& WindowManager::openTab(MainWindow* window, std::optional<Url> url) {
    if (!window) return *openWindow(std::move(url)).selected();
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

MainWindow& WindowManager::showMainWindow() {
    MainWindow* const window = frontWindow();
    if (!window) return openWindow();
    window->present();
    return *window;
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

void WindowManager::scheduleSave() {
}

void WindowManager::becameActive(MainWindow& window) {
    lastActive_ = &window;
    if (onBoardsChanged) onBoardsChanged();
}

void WindowManager::windowWillClose(MainWindow& window) {
    const auto* const controller = window.selected();
    const auto url = controller ? controller->currentURL() : std::nullopt;
    if (url) model_->session.prefs().setLastURL(url->text());
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

MainWindow& WindowManager::windowForTornTab() {
    MainWindow& window = *windows_.emplace_back(std::make_unique<MainWindow>(*this, application_));
    window.present();
    return window;
}

void WindowManager::closeSoon(MainWindowController& controller) {
    runSoon([weak = controller.weak_from_this()] {
        const auto tab = weak.lock();
        if (tab && tab->window()) tab->window()->closeTab(*tab);
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
