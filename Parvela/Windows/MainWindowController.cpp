#include "Windows/MainWindowController.h"

#include "Windows/MainWindow.h"
#include "Windows/WindowManager.h"

#include <algorithm>
#include <utility>

namespace parvela {

namespace {

/// How long a finished page may take to say that it draws the title bar area itself.
constexpr std::chrono::milliseconds shellPatience{700};
/// How long a wish of the user may wait for a page that loads.
constexpr std::chrono::milliseconds untoldPatience{30'000};

}  // namespace

MainWindowController::MainWindowController(WindowManager& manager, std::shared_ptr<AppModel> model,
                                           WebKitWebView* related)
    : manager_(manager),
      model_(std::move(model)),
      webView_(manager.web(), related),
      browser_(manager.web(), webView_, model_, manager.desktop(), manager.clock()),
      loadedServerRevision_(model_->serverRevision.get()),
      isPagesOwn_(related != nullptr) {
    browser_.onCommit = [this] { committed(); };
    browser_.onFinish = [this] { finished(); };
    browser_.openNewTab = [this](WebKitWebView* opener) { return manager_.openTabFor(*this, opener); };
    browser_.onSignInHandOff = [this] { manager_.waitForSignIn(*this); };
    browser_.openBackgroundTab = [this](const Url& url) { manager_.openBackgroundTab(*this, url); };
    browser_.onElementFullScreen = [this](bool on) {
        if (window_) window_->setElementFullScreen(on);
    };
    browser_.onCloseRequest = [this] {
        if (isPagesOwn_) manager_.closeSoon(*this);
    };
    browser_.onAttention = [this] {
        if (window_) window_->show(*this);
    };
    webkit_web_view_set_zoom_level(webView_.get(), manager.preferences().pageZoom());

    const auto changed = [this](WebKitWebView*, GParamSpec*) {
        if (window_) window_->pageChanged(*this);
        manager_.scheduleSave();
    };
    connections_.push_back(connect<void(WebKitWebView*, GParamSpec*)>(webView_.get(), "notify::title", changed));
    connections_.push_back(connect<void(WebKitWebView*, GParamSpec*)>(webView_.get(), "notify::uri", changed));
    // The address changes before the history does.
    connections_.push_back(connect<void(WebKitBackForwardList*, WebKitBackForwardListItem*, gpointer)>(
        webkit_web_view_get_back_forward_list(webView_.get()), "changed",
        [this](WebKitBackForwardList*, WebKitBackForwardListItem*, gpointer) {
            if (window_) window_->pageChanged(*this);
        }));
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitUserMessage*)>(
        webView_.get(), "user-message-received", [this](WebKitWebView*, WebKitUserMessage* message) {
            return static_cast<gboolean>(manager_.bridge().receive(*this, message));
        }));
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitNotification*)>(
        webView_.get(), "show-notification", [this](WebKitWebView*, WebKitNotification* notification) {
            if (manager_.onPageNotification) manager_.onPageNotification(*this, notification);
            return gboolean{TRUE};
        }));
    serverChanged_ = model_->serverRevision.observe([this](std::int64_t revision) {
        if (std::exchange(loadedServerRevision_, revision) == revision) return;
        loadWhenShown(model_->server.get().appURL);
        if (window_ && window_->selected() == this) shown();
    });
}

MainWindowController::~MainWindowController() = default;

void MainWindowController::load(const Url& url) {
    pending_.reset();
    requested_ = url;
    browser_.load(url);
}

void MainWindowController::loadWhenShown(Url url) {
    pending_ = std::move(url);
}

void MainWindowController::shown() {
    if (const auto url = std::exchange(pending_, std::nullopt)) load(*url);
}

void MainWindowController::reload(Cache cache) {
    if (cache == Cache::bypass) {
        webkit_web_view_reload_bypass_cache(webView_.get());
    } else {
        webkit_web_view_reload(webView_.get());
    }
}

void MainWindowController::askToClose(std::function<void(bool)> answer) {
    if (!hasCommitted_) {
        answer(true);
        return;
    }
    browser_.closing().ask(std::move(answer));
}

std::optional<Url> MainWindowController::currentURL() const {
    if (pending_) return pending_;
    const char* const uri = webkit_web_view_get_uri(webView_.get());
    auto url = uri ? Url::parseFromEngine(uri) : std::nullopt;
    return url ? url : requested_;
}

void MainWindowController::openPath(std::string_view pathAndQuery) {
    openPage(model_->server.get().appPageAt(pathAndQuery));
}

void MainWindowController::openPage(const Url& url) {
    const ServerConfig& server = model_->server.get();
    if (!supportsShell() || !server.isAppOrigin(url)) {
        load(url);
        return;
    }
    const std::string path = url.path() + (url.query() ? "?" + *url.query() : "");
    webView_.dispatchOrElse(NativeBridge::Navigate{path}, [weak = weak_from_this(), url] {
        if (const auto self = weak.lock()) self->load(url);
    });
}

void MainWindowController::tell(NativeBridge::Event event, std::function<void()> otherwise) {
    untold_.push_back({std::move(event), std::move(otherwise)});
    if (hasCommitted_ && shell_ != ShellSupport::unknown) {
        tellUntold();
        return;
    }
    untoldPatience_ = MainLoopTimer(untoldPatience, [this] {
        for (const Untold& one : std::exchange(untold_, {})) {
            if (one.otherwise) one.otherwise();
        }
    });
}

void MainWindowController::tellUntold() {
    for (const Untold& one : std::exchange(untold_, {})) {
        if (!one.otherwise) {
            webView_.dispatch(one.event);
        } else if (supportsShell()) {
            webView_.dispatchOrElse(one.event, one.otherwise);
        } else {
            one.otherwise();
        }
    }
}

void MainWindowController::committed() {
    hasCommitted_ = true;
    shellPatience_.reset();
    shell_ = ShellSupport::unknown;
    sentTitlebar_.reset();
    sentFullscreen_.reset();
    if (!boards_.empty()) setBoards({});
    if (window_) window_->updateChrome();
}

void MainWindowController::finished() {
    if (shell_ == ShellSupport::unknown && !browser_.showsErrorPage()) {
        shellPatience_ = MainLoopTimer(shellPatience, [this] {
            shell_ = ShellSupport::no;
            tellUntold();
            if (window_) window_->updateChrome();
        });
    }
    if (window_) window_->pageChanged(*this);
}

void MainWindowController::pageSupportsShell() {
    shellPatience_.reset();
    shell_ = ShellSupport::yes;
    manager_.pagesSupportShell();
    tellUntold();
    if (!window_) return;
    window_->updateChrome();
    sentFullscreen_.reset();
    sendFullscreen(window_->isFullScreen());
    sentTitlebar_.reset();
    sendTitlebar();
}

bool MainWindowController::wantsInset() const {
    return shell_ == ShellSupport::yes || (shell_ == ShellSupport::unknown && manager_.doPagesSupportShell());
}

void MainWindowController::setBoards(std::vector<BoardRef> boards) {
    if (boards == boards_) return;
    boards_ = std::move(boards);
    manager_.boardsChanged(*this);
}

void MainWindowController::windowDrag() {
    if (!window_) return;
    const auto press = webView_.recentMouseDown(ParvelaWebView::Button::anyState);
    if (press && press->clicks == 2) {
        titlebarDoubleClick();
    } else {
        webView_.beginWindowDrag();
    }
}

void MainWindowController::titlebarDoubleClick() {
    webView_.clearLastMouseDown();
    if (window_) window_->titlebarDoubleClick();
}

void MainWindowController::sendTitlebar() {
    if (!supportsShell() || !window_) return;
    const NativeBridge::Titlebar now = window_->titlebarFor(*this);
    if (sentTitlebar_ && sentTitlebar_->inset == now.inset && sentTitlebar_->buttonsRight == now.buttonsRight) return;
    sentTitlebar_ = now;
    webView_.dispatch(now);
}

void MainWindowController::sendFullscreen(bool on) {
    if (!supportsShell() || sentFullscreen_ == on) return;
    sentFullscreen_ = on;
    webView_.dispatch(NativeBridge::Fullscreen{on});
}

double MainWindowController::zoom() const {
    return webkit_web_view_get_zoom_level(webView_.get());
}

void MainWindowController::setZoom(double zoom) {
    webkit_web_view_set_zoom_level(webView_.get(), zoom);
    if (window_) window_->updateChrome();
}

std::string MainWindowController::title() const {
    const char* const title = webkit_web_view_get_title(webView_.get());
    return title && *title ? title : "Parvela";
}

}  // namespace parvela
