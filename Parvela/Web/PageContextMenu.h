#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Url.h>

#include <functional>

#include <webkit/webkit.h>

namespace parvela {

/// The menu of the secondary mouse button: WebKit's own without what makes no sense in a window for one web app, and
/// with a way to open a link in the browser.
class PageContextMenu {
public:
    PageContextMenu(WebKitWebView* view, std::function<void(const Url&)> openInBrowser);
    PageContextMenu(const PageContextMenu&) = delete;
    PageContextMenu& operator=(const PageContextMenu&) = delete;

private:
    void shape(WebKitContextMenu* menu, WebKitHitTestResult* target);

    std::function<void(const Url&)> openInBrowser_;
    Connection shown_;
    Connection chosen_;
};

}  // namespace parvela
