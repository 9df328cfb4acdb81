#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Url.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <vector>

#include <webkit/webkit.h>

namespace parvela {

/// The page's menu for the keyboard: the engine has one for the pointer only, and answers the keys with that of a
/// hidden field, which then keeps the focus.
class KeyboardMenu {
public:
    KeyboardMenu(WebKitWebView* view, std::function<void(const Url&)> openInBrowser);
    KeyboardMenu(const KeyboardMenu&) = delete;
    KeyboardMenu& operator=(const KeyboardMenu&) = delete;
    ~KeyboardMenu();

    static bool isCalledBy(guint key, GdkModifierType modifiers);

    /// Tells the page, which may show a menu of its own; else shows ours beside what has the focus there.
    void show();

private:
    void popUp(JSCValue* place);
    void takeDown();

    WebKitWebView* view_;
    std::function<void(const Url&)> openInBrowser_;
    GtkWidget* popover_ = nullptr;  ///< a weak pointer
    std::vector<Connection> connections_;
    MainLoopTimer closed_;
    std::shared_ptr<KeyboardMenu*> self_ = std::make_shared<KeyboardMenu*>(this);
};

}  // namespace parvela
