#include "Web/BrowserDelegate.h"

#include "Support/DesktopServices.h"
#include "Web/ParvelaWebView.h"

#include <ParvelaKit/ErrorPage.h>

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

BrowserDelegate::BrowserDelegate(ParvelaWebView& webView, std::shared_ptr<AppModel> model, DesktopServices& desktop,
                                 std::shared_ptr<const Clock> clock)
    : webView_(webView), model_(std::move(model)), desktop_(desktop), policy_(std::move(clock)) {
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
        view, "load-failed", [this](WebKitWebView*, WebKitLoadEvent, const char* uri, GError* error) {
            return static_cast<gboolean>(loadFailed(uri, error));
        }));
    connections_.push_back(connect<void(WebKitWebView*, WebKitWebProcessTerminationReason)>(
        view, "web-process-terminated",
        [this](WebKitWebView*, WebKitWebProcessTerminationReason reason) { processTerminated(reason); }));
    connections_.push_back(connect<void(WebKitWebView*)>(view, "close", [this](WebKitWebView*) {
        if (onCloseRequest) onCloseRequest();
    }));
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
    const auto answer = policy_.navigation(uri, NavigationPolicy::Frame::unknown, gestureOf(action),
                                           NavigationPolicy::Purpose::show, model_->server.get());
    if (answer.action == NavigationPolicy::Action::allow) {
        redirectTarget_ = webkit_navigation_action_is_redirect(action) ? std::optional(uri) : std::nullopt;
        webkit_policy_decision_use(WEBKIT_POLICY_DECISION(decision));
    } else {
        webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(decision));
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
        case WEBKIT_LOAD_REDIRECTED:
            break;
        case WEBKIT_LOAD_COMMITTED: {
            const char* const uri = webkit_web_view_get_uri(webView_.get());
            if (errorPage_ && (!uri || errorPage_->url != uri)) errorPage_.reset();
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
    showErrorPage(failingUri ? failingUri : "", error);
    return true;
}

void BrowserDelegate::blocked(const std::string& failingUri) {
    const std::string uri = std::exchange(redirectTarget_, std::nullopt).value_or(failingUri);
    carryOut(policy_.navigation(uri, NavigationPolicy::Frame::main, NavigationPolicy::Gesture::none,
                                NavigationPolicy::Purpose::show, model_->server.get()));
}

void BrowserDelegate::showErrorPage(const std::string& failingUri, const GError* error) {
    const ServerConfig& server = model_->server.get();
    const auto failure = isUnreachable(error) ? ErrorPage::Failure::unreachable : ErrorPage::Failure::other;
    const std::string html = ErrorPage::html(ErrorPage::message(failure, error->message, server), server.appURL);
    errorPage_ = Failure{failingUri};
    webkit_web_view_load_alternate_html(webView_.get(), html.c_str(), failingUri.c_str(), nullptr);
}

void BrowserDelegate::processTerminated(WebKitWebProcessTerminationReason) {
    webkit_web_view_reload(webView_.get());
}

}  // namespace parvela
