#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <vector>

#include <webkit/webkit.h>

namespace parvela {

/// Answers a page's script dialogs (alert, confirm, prompt, leaving the page) and its file fields with dialogs of the
/// desktop, on the window that shows the page.
class PageDialogs {
public:
    explicit PageDialogs(WebKitWebView* view);
    PageDialogs(const PageDialogs&) = delete;
    PageDialogs& operator=(const PageDialogs&) = delete;

private:
    void showScriptDialog(WebKitScriptDialog* dialog);
    void chooseFiles(WebKitFileChooserRequest* request);
    GtkWindow* window() const;

    WebKitWebView* view_;
    Ref<GtkFileChooserNative> chooser_;
    Connection chosen_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
