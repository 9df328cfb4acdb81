#pragma once

#include "Model/AppModel.h"
#include "Web/CrashGuard.h"
#include "Web/KeyboardMenu.h"
#include "Web/PageClosing.h"
#include "Web/PageContextMenu.h"
#include "Web/PageDialogs.h"
#include "Web/PagePermissions.h"
#include "Web/PageRetry.h"

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
class WebEnvironment;

/// Decides what one web view may show: pages of the web app stay, others go to the default browser, sign-in with an
/// outside provider is handed off, and what cannot be reached becomes an error page.
class BrowserDelegate {
public:
    BrowserDelegate(WebEnvironment& environment, ParvelaWebView& webView, std::shared_ptr<AppModel> model,
                    DesktopServices& desktop, std::shared_ptr<const Clock> clock);
    BrowserDelegate(const BrowserDelegate&) = delete;
    BrowserDelegate& operator=(const BrowserDelegate&) = delete;

    std::function<void()> onCommit;
    std::function<void()> onFinish;
    /// Gives a new web view in a new tab, or none.
    std::function<WebKitWebView*(WebKitWebView* opener)> openNewTab;
    /// Opens a page of the web app in a tab that stays behind.
    std::function<void(const Url&)> openBackgroundTab;
    /// A part of the page covers the whole screen, or ceases to.
    std::function<void(bool)> onElementFullScreen;
    /// The page wants its tab closed, by a script.
    std::function<void()> onCloseRequest;
    /// A dialog of the page is about to be shown.
    std::function<void()> onAttention;
    /// A sign-in goes on in the browser; this view waits for it to come back.
    std::function<void()> onSignInHandOff;

    /// Loads a page of the user's choice. While the first one is not yet begun, the last choice counts.
    void load(const Url& url);

    bool showsErrorPage() const noexcept { return errorPage_.has_value(); }

    /// Asks the page, and if it wants its user, whether it may be closed.
    PageClosing& closing() noexcept { return closing_; }

private:
    void watchView();

    bool decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);
    bool decideNavigation(WebKitNavigationPolicyDecision* decision);
    bool decideResponse(WebKitResponsePolicyDecision* decision);
    WebKitWebView* createView(WebKitNavigationAction* action);
    void loadChanged(WebKitLoadEvent event);
    void carryOut(const NavigationPolicy::Decision& decision);
    bool loadFailed(const char* failingUri, const GError* error);
    void blocked(const std::string& failingUri);
    bool loadFailedForTls(const char* failingUri, GTlsCertificateFlags problems);
    enum class Recovery { byUser, whenReachable };
    void showErrorPage(const std::string& failingUri, const std::string& message, Recovery recovery);
    bool openAside(WebKitNavigationAction* action, const std::string& uri);
    void processTerminated(WebKitWebProcessTerminationReason reason);

    WebEnvironment& environment_;
    ParvelaWebView& webView_;
    std::shared_ptr<AppModel> model_;
    DesktopServices& desktop_;
    NavigationPolicy policy_;
    std::vector<Connection> connections_;
    /// The address that the error page in the view stands for.
    enum class FirstLoad { none, asked, begun };
    FirstLoad firstLoad_ = FirstLoad::none;
    std::optional<Url> insteadOfFirst_;
    MainLoopTimer loadInstead_;
    std::optional<std::string> errorPage_;
    bool loadsErrorPage_ = false;
    std::unique_ptr<PageRetry> retry_;
    CrashGuard crashes_;
    bool keepsDying_ = false;  // and the next load gives way to an error page
    MainLoopTimer afterCrash_;
    PageClosing closing_;
    PageDialogs dialogs_;
    PagePermissions permissions_;
    PageContextMenu contextMenu_;
    KeyboardMenu keyboardMenu_;
};

}  // namespace parvela
