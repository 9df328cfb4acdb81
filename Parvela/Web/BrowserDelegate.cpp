#include "Web/BrowserDelegate.h"

#include "Support/DesktopServices.h"
#include "Web/CertificateProblem.h"
#include "Web/ParvelaWebView.h"
#include "Web/WebEnvironment.h"

#include <ParvelaKit/ErrorPage.h>
#include <Platform/SoupTransport.h>

#include <string_view>
#include <utility>

namespace parvela {

namespace {

/// WebKit's own number for a load that a content filter stopped; its public header does not name it.
constexpr int blockedByFilter = 104;

bool isCancelled(const GError* error) {
    return g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
           g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
}

/// No network, no such host, nobody answers there.
bool isUnreachable(const GError* error) {
    if (error->domain == G_RESOLVER_ERROR) return true;
    if (error->domain != G_IO_ERROR) return false;
    switch (error->code) {
        case G_IO_ERROR_CONNECTION_REFUSED:
        case G_IO_ERROR_HOST_NOT_FOUND:
        case G_IO_ERROR_HOST_UNREACHABLE:
        case G_IO_ERROR_NETWORK_UNREACHABLE:
            return true;
        default:
            return false;
    }
}

std::string uriOf(WebKitNavigationAction* action) {
    WebKitURIRequest* const request = webkit_navigation_action_get_request(action);
    const char* const uri = request ? webkit_uri_request_get_uri(request) : nullptr;
    return uri ? uri : "";
}

NavigationPolicy::Gesture gestureOf(WebKitNavigationAction* action) {
    return webkit_navigation_action_is_user_gesture(action) ? NavigationPolicy::Gesture::user
                                                            : NavigationPolicy::Gesture::none;
}

}  // namespace

BrowserDelegate::BrowserDelegate(WebEnvironment& environment, ParvelaWebView& webView, std::shared_ptr<AppModel> model,
                                 DesktopServices& desktop, std::shared_ptr<const Clock> clock)
    : environment_(environment),
      webView_(webView),
      model_(std::move(model)),
      desktop_(desktop),
      policy_(std::move(clock)),
      closing_(webView.get()),
      dialogs_(webView.get()),
      permissions_(webView.get(), model_->session.prefs()),
      contextMenu_(webView.get(), [this](const Url& url) { desktop_.open(url); }),
      keyboardMenu_(webView.get(), [this](const Url& url) { desktop_.open(url); }) {
    webView_.onMenuKey = [this] { keyboardMenu_.show(); };
    const auto attention = [this] {
        if (onAttention) onAttention();
    };
    closing_.onAttention = attention;
    dialogs_.onAttention = attention;
    dialogs_.mayAskToLeave = [this] { return closing_.userMayBeAsked(); };
    dialogs_.onLeaveAnswered = [this](bool leaves) { closing_.userAnswered(leaves); };
    watchView();
}

void BrowserDelegate::watchView() {
    WebKitWebView* const view = webView_.get();
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitPolicyDecision*, WebKitPolicyDecisionType)>(
        view, "decide-policy", [this](WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) {
            return static_cast<gboolean>(decidePolicy(decision, type));
        }));
    connections_.push_back(connect<GtkWidget*(WebKitWebView*, WebKitNavigationAction*)>(
        view, "create", [this](WebKitWebView*, WebKitNavigationAction* action) {
            WebKitWebView* const created = createView(action);
            return created ? GTK_WIDGET(created) : nullptr;
        }));
    connections_.push_back(connect<void(WebKitWebView*, WebKitLoadEvent)>(
        view, "load-changed", [this](WebKitWebView*, WebKitLoadEvent event) { loadChanged(event); }));
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitLoadEvent, const char*, GError*)>(
        view, "load-failed", [this](WebKitWebView*, WebKitLoadEvent event, const char* uri, GError* error) {
            // What a page has shown by then stays.
            if (event == WEBKIT_LOAD_COMMITTED) return gboolean{TRUE};
            return static_cast<gboolean>(loadFailed(uri, error));
        }));
    connections_.push_back(connect<gboolean(WebKitWebView*, const char*, GTlsCertificate*, GTlsCertificateFlags)>(
        view, "load-failed-with-tls-errors",
        [this](WebKitWebView*, const char* uri, GTlsCertificate*, GTlsCertificateFlags problems) {
            return static_cast<gboolean>(loadFailedForTls(uri, problems));
        }));
    for (const auto& [signal, on] : {std::pair{"enter-fullscreen", true}, {"leave-fullscreen", false}}) {
        connections_.push_back(connect<gboolean(WebKitWebView*)>(view, signal, [this, on](WebKitWebView*) {
            if (onElementFullScreen) onElementFullScreen(on);
            return gboolean{FALSE};
        }));
    }
    connections_.push_back(connect<void(WebKitWebView*, WebKitWebProcessTerminationReason)>(
        view, "web-process-terminated",
        [this](WebKitWebView*, WebKitWebProcessTerminationReason reason) { processTerminated(reason); }));
    connections_.push_back(connect<void(WebKitWebView*)>(view, "close", [this](WebKitWebView*) {
        if (!closing_.closeRequested() && onCloseRequest) onCloseRequest();
    }));
}

void BrowserDelegate::load(const Url& url) {
    if (firstLoad_ == FirstLoad::asked) {
        // The engine asked for several pages before its process runs may end at an empty one.
        insteadOfFirst_ = url;
        return;
    }
    if (firstLoad_ == FirstLoad::none) firstLoad_ = FirstLoad::asked;
    webkit_web_view_load_uri(webView_.get(), url.text().c_str());
}

bool BrowserDelegate::decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) {
    switch (type) {
        case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
            return decideNavigation(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
        case WEBKIT_POLICY_DECISION_TYPE_RESPONSE:
            return decideResponse(WEBKIT_RESPONSE_POLICY_DECISION(decision));
        case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION:
            return false;
    }
    return false;
}

/// Any frame's navigation: WebKit does not say whose it is. That main frames stay within the web app is the content
/// filter's part; blocked() then decides where such a navigation goes instead.
bool BrowserDelegate::decideNavigation(WebKitNavigationPolicyDecision* decision) {
    WebKitNavigationAction* const action = webkit_navigation_policy_decision_get_navigation_action(decision);
    const std::string uri = uriOf(action);
    firstLoad_ = FirstLoad::begun;
    if (const auto instead = std::exchange(insteadOfFirst_, std::nullopt)) {
        webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(decision));
        loadInstead_ = MainLoopTimer(std::chrono::milliseconds{0}, [this, url = *instead] { load(url); });
        return true;
    }
    if (std::exchange(keepsDying_, false)) {
        webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(decision));
        afterCrash_ = MainLoopTimer(std::chrono::milliseconds{0}, [this, uri] {
            showErrorPage(uri, "The page stopped working several times in a row.", Recovery::byUser);
        });
        return true;
    }
    if (openAside(action, uri)) {
        webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(decision));
        return true;
    }
    const auto answer = policy_.navigation(uri, NavigationPolicy::Frame::unknown, gestureOf(action),
                                           NavigationPolicy::Purpose::show, model_->server.get());
    if (answer.action == NavigationPolicy::Action::allow) {
        if (webkit_navigation_action_is_redirect(action)) {
            policy_.redirected(uri);
        } else if (gestureOf(action) == NavigationPolicy::Gesture::user) {
            policy_.chosen(uri);
        }
        // The page's process starts meanwhile. The load itself begins with this decision, so nothing is sent before the
        // filter is in force.
        environment_.whenReady([held = Ref<WebKitPolicyDecision>::ref(WEBKIT_POLICY_DECISION(decision))] {
            webkit_policy_decision_use(held.get());
        });
    } else {
        webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(decision));
        carryOut(answer);
    }
    return true;
}

/// A click with the middle button or with Ctrl opens a link without leaving the page.
bool BrowserDelegate::openAside(WebKitNavigationAction* action, const std::string& uri) {
    if (webkit_navigation_action_get_navigation_type(action) != WEBKIT_NAVIGATION_TYPE_LINK_CLICKED) return false;
    const guint button = webkit_navigation_action_get_mouse_button(action);
    const bool withControl = (webkit_navigation_action_get_modifiers(action) & GDK_CONTROL_MASK) != 0;
    const bool aside = button == GDK_BUTTON_MIDDLE || (button == GDK_BUTTON_PRIMARY && withControl);
    if (!aside) return false;
    const auto answer = policy_.newWindow(uri, NavigationPolicy::Gesture::user, model_->server.get());
    if (answer.action == NavigationPolicy::Action::openTab) {
        if (answer.url && openBackgroundTab) openBackgroundTab(*answer.url);
    } else {
        carryOut(answer);
    }
    return true;
}

bool BrowserDelegate::decideResponse(WebKitResponsePolicyDecision* decision) {
    WebKitURIResponse* const response = webkit_response_policy_decision_get_response(decision);
    SoupMessageHeaders* const headers = response ? webkit_uri_response_get_http_headers(response) : nullptr;
    const char* const disposition = headers ? soup_message_headers_get_one(headers, "Content-Disposition") : nullptr;
    const auto display = webkit_response_policy_decision_is_mime_type_supported(decision)
                             ? NavigationPolicy::Display::supported
                             : NavigationPolicy::Display::unsupported;
    const auto answer =
        NavigationPolicy::response(display, disposition ? std::optional<std::string_view>(disposition) : std::nullopt);
    if (answer == NavigationPolicy::Action::download) {
        webkit_policy_decision_download(WEBKIT_POLICY_DECISION(decision));
    } else {
        webkit_policy_decision_use(WEBKIT_POLICY_DECISION(decision));
    }
    return true;
}

void BrowserDelegate::carryOut(const NavigationPolicy::Decision& decision) {
    switch (decision.action) {
        case NavigationPolicy::Action::handOff:
            if (onSignInHandOff) onSignInHandOff();
            [[fallthrough]];
        case NavigationPolicy::Action::openInBrowser:
        case NavigationPolicy::Action::openWithHandler:
            if (decision.url) desktop_.open(*decision.url);
            break;
        case NavigationPolicy::Action::allow:
        case NavigationPolicy::Action::cancel:
        case NavigationPolicy::Action::download:
        case NavigationPolicy::Action::openTab:
            break;
    }
}

WebKitWebView* BrowserDelegate::createView(WebKitNavigationAction* action) {
    const auto answer = policy_.newWindow(uriOf(action), gestureOf(action), model_->server.get());
    if (answer.action != NavigationPolicy::Action::openTab) {
        carryOut(answer);
        return nullptr;
    }
    WebKitWebView* const created = openNewTab ? openNewTab(webView_.get()) : nullptr;
    if (!created && answer.url) webkit_web_view_load_uri(webView_.get(), answer.url->text().c_str());
    return created;
}

void BrowserDelegate::loadChanged(WebKitLoadEvent event) {
    switch (event) {
        case WEBKIT_LOAD_STARTED:
            policy_.mainLoadStarted();
            break;
        case WEBKIT_LOAD_REDIRECTED:
            break;
        case WEBKIT_LOAD_COMMITTED: {
            policy_.mainLoadEnded();
            dialogs_.pageChanged();
            const char* const uri = webkit_web_view_get_uri(webView_.get());
            // The page that has come back has the address of the error page that stood for it.
            const bool isErrorPage = std::exchange(loadsErrorPage_, false) && errorPage_ && uri && *errorPage_ == uri;
            if (!isErrorPage) {
                errorPage_.reset();
                retry_.reset();
            }
            if (onCommit) onCommit();
            break;
        }
        case WEBKIT_LOAD_FINISHED:
            if (errorPage_) webView_.run(ErrorPage::retryScript(model_->server.get().appURL));
            if (onFinish) onFinish();
            break;
    }
}

bool BrowserDelegate::loadFailed(const char* failingUri, const GError* error) {
    if (error->domain == WEBKIT_POLICY_ERROR && error->code == blockedByFilter) {
        blocked(failingUri ? failingUri : "");
        return true;
    }
    if (isCancelled(error) ||
        g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE))
        return true;
    const bool unreachable = isUnreachable(error);
    const auto failure = unreachable ? ErrorPage::Failure::unreachable : ErrorPage::Failure::other;
    showErrorPage(failingUri ? failingUri : "", ErrorPage::message(failure, error->message, model_->server.get()),
                  unreachable ? Recovery::whenReachable : Recovery::byUser);
    return true;
}

bool BrowserDelegate::loadFailedForTls(const char* failingUri, GTlsCertificateFlags problems) {
    const auto url = Url::parseFromEngine(failingUri);
    showErrorPage(failingUri, certificateMessage(url ? url->lowercaseHost() : failingUri, problems), Recovery::byUser);
    return true;
}

void BrowserDelegate::blocked(const std::string& failingUri) {
    carryOut(policy_.blocked(failingUri, model_->server.get()));
}

void BrowserDelegate::showErrorPage(const std::string& failingUri, const std::string& message, Recovery recovery) {
    const std::string html = ErrorPage::html(message, model_->server.get().appURL);
    errorPage_ = failingUri;
    loadsErrorPage_ = true;
    webkit_web_view_load_alternate_html(webView_.get(), html.c_str(), failingUri.c_str(), nullptr);
    const auto url = Url::parseFromEngine(failingUri);
    if (recovery == Recovery::byUser || !url) return;
    retry_ = std::make_unique<PageRetry>(*url, SoupTransport::shared(), [this, failingUri] {
        webkit_web_view_load_uri(webView_.get(), failingUri.c_str());
    });
}

void BrowserDelegate::processTerminated(WebKitWebProcessTerminationReason reason) {
    if (reason == WEBKIT_WEB_PROCESS_TERMINATED_BY_API) return;
    if (crashes_.mayReload(std::chrono::steady_clock::now())) {
        webkit_web_view_reload(webView_.get());
        return;
    }
    // The engine shows a page of ours only in a living process, which a reload starts; what would be loaded is refused.
    keepsDying_ = true;
    webkit_web_view_reload(webView_.get());
}

}  // namespace parvela
