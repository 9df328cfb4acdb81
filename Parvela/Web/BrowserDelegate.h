#pragma once

#include "Model/AppModel.h"

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/NavigationPolicy.h>
#include <ParvelaKit/Url.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <webkit/webkit.h>

namespace parvela {

class DesktopServices;
class ParvelaWebView;

/// Decides what one web view may show: pages of the web app stay, others go to the default browser, sign-in with an
/// outside provider is handed off, and what cannot be reached becomes an error page.
class BrowserDelegate {
public:
    BrowserDelegate(ParvelaWebView& webView, std::shared_ptr<AppModel> model, DesktopServices& desktop,
                    std::shared_ptr<const Clock> clock);
    BrowserDelegate(const BrowserDelegate&) = delete;
    BrowserDelegate& operator=(const BrowserDelegate&) = delete;

    std::function<void()> onCommit;
    std::function<void()> onFinish;
    /// Gives a new web view in a new tab, or none.
    std::function<WebKitWebView*(WebKitWebView* opener)> openNewTab;
    /// The page wants its tab closed.
    std::function<void()> onCloseRequest;
    /// A sign-in goes on in the browser; this view waits for it to come back.
    std::function<void()> onSignInHandOff;

    bool showsErrorPage() const noexcept { return errorPage_.has_value(); }

private:
    struct Failure {
        std::string url;
    };

    bool decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);
    bool decideNavigation(WebKitNavigationPolicyDecision* decision);
    bool decideResponse(WebKitResponsePolicyDecision* decision);
    WebKitWebView* createView(WebKitNavigationAction* action);
    void loadChanged(WebKitLoadEvent event);
    void carryOut(const NavigationPolicy::Decision& decision);
    bool loadFailed(const char* failingUri, const GError* error);
    void blocked(const std::string& failingUri);
    void showErrorPage(const std::string& failingUri, const GError* error);
    void processTerminated(WebKitWebProcessTerminationReason reason);

    ParvelaWebView& webView_;
    std::shared_ptr<AppModel> model_;
    DesktopServices& desktop_;
    NavigationPolicy policy_;
    std::vector<Connection> connections_;
    std::optional<Failure> errorPage_;
    /// Where the navigation under way was last redirected to; its failure names only where it began.
    std::optional<std::string> redirectTarget_;
};

}  // namespace parvela
