#pragma once

#include "Web/DialogGuard.h"

#include <ParvelaKit/GLibPtr.h>

#include <functional>
#include <memory>
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

    /// Called before a dialog is shown on the page's window.
    std::function<void()> onAttention;
    /// The page wants its user asked whether to leave it. Answers whether to ask; not asked, the user stays.
    std::function<bool()> mayAskToLeave;
    /// What the user said to that.
    std::function<void(bool leaves)> onLeaveAnswered;

    /// Another page is in the view.
    void pageChanged() { guard_->reset(); }

private:
    void showScriptDialog(WebKitScriptDialog* dialog);
    void chooseFiles(WebKitFileChooserRequest* request);
    GtkWindow* window() const;

    WebKitWebView* view_;
    std::shared_ptr<DialogGuard> guard_ = std::make_shared<DialogGuard>();
    Ref<GtkFileChooserNative> chooser_;
    Connection chosen_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
