#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/NativeBridge.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <optional>
#include <string>

#include <webkit/webkit.h>

namespace parvela {

class WebEnvironment;

/// A web view that shows the web app, and what a page without a title bar needs to move its window: the last press of a
/// mouse button.
///
/// The desktop delivers the click that activates a window to the page as well, so nothing is needed for the page's
/// header to answer the first click.
class ParvelaWebView {
public:
    /// `related` is the view whose page asked for this one, or none.
    ParvelaWebView(const WebEnvironment& environment, WebKitWebView* related);
    ParvelaWebView(const ParvelaWebView&) = delete;
    ParvelaWebView& operator=(const ParvelaWebView&) = delete;

    WebKitWebView* get() const noexcept { return view_.get(); }
    GtkWidget* widget() const noexcept { return GTK_WIDGET(view_.get()); }

    /// A press of the primary button.
    struct MouseDown {
        gint64 at;   ///< g_get_monotonic_time() of its arrival
        int clicks;  ///< 2 for the second press of a double click
        double x;    ///< in the view
        double y;
    };
    enum class Button { anyState, stillPressed };

    /// The last press when it is less than 1.5 s old and, on request, the button is still held.
    std::optional<MouseDown> recentMouseDown(Button button) const;
    void clearLastMouseDown() noexcept { lastMouseDown_.reset(); }

    /// Lets the user move the window with the button that a recent press still holds: from the moment the pointer has
    /// moved far enough to tell a drag from a click, until the release.
    void beginWindowDrag();

    /// Runs a script in the page; its outcome is not known.
    void run(const std::string& script) const;
    void dispatch(const NativeBridge::Event& event) const { run(NativeBridge::script(event)); }
    /// Dispatches an event; calls `otherwise` when the page does not take it, or does not answer in 2 s. `otherwise`
    /// must hold no raw pointer that may dangle.
    void dispatchOrElse(const NativeBridge::Event& event, std::function<void()> otherwise) const;

    /// Called at the first key press in the page.
    std::function<void()> onFirstKey;
    /// Called for the keys that ask for a menu; the page is told of it by whoever answers.
    std::function<void()> onMenuKey;

private:
    bool buttonIsHeld() const;
    void watchPointer();
    void watchKeys();
    void pointerMoved(double x, double y);
    void moveWindow();
    void endPress();
    void followScheme();
    void showBackground();

    Ref<WebKitWebView> view_;
    Connection pressed_;
    Connection moved_;
    Connection typed_;
    bool dragWanted_ = false;
    Connection realized_;
    Connection schemeChanged_;
    MainLoopTimer recolour_;
    std::optional<MouseDown> lastMouseDown_;
};

}  // namespace parvela
