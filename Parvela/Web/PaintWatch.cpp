#include "Web/PaintWatch.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/MainLoop.h>

#include <chrono>
#include <string_view>
#include <utility>

namespace parvela {

namespace {

constexpr std::chrono::seconds patience{15};

/// Animation frames come only while something takes what the page draws.
constexpr std::string_view twoFrames =
    "await new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)));";

bool isLookedAt(GtkWidget* view) {
    GtkRoot* const root = gtk_widget_get_root(view);
    return gtk_widget_get_mapped(view) && GTK_IS_WINDOW(root) && gtk_window_is_active(GTK_WINDOW(root));
}

}  // namespace

struct PaintWatch::State {
    WebKitWebView* view;  ///< owns the connection, and with it the interest in this state
    std::function<void()> onBlank;
    MainLoopTimer timer;
    Connection loaded;
    bool painted = false;
};

PaintWatch::PaintWatch(WebKitWebView* view, std::function<void()> onBlank)
    : state_(std::make_shared<State>(State{.view = view, .onBlank = std::move(onBlank)})) {
    state_->loaded = connect<void(WebKitWebView*, WebKitLoadEvent)>(
        view, "load-changed", [weak = std::weak_ptr(state_)](WebKitWebView*, WebKitLoadEvent event) {
            const auto state = weak.lock();
            if (state && event == WEBKIT_LOAD_FINISHED && !state->painted && !state->timer.isActive()) ask(state);
        });
}

void PaintWatch::ask(const std::shared_ptr<State>& state) {
    webkit_web_view_call_async_javascript_function(
        state->view, twoFrames.data(), static_cast<gssize>(twoFrames.size()), nullptr, nullptr, nullptr, nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::weak_ptr<State>> asked(static_cast<std::weak_ptr<State>*>(data));
            const auto value = Ref<JSCValue>::adopt(
                webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
            const auto alive = asked->lock();
            if (!alive || !value) return;  // the page went away before it could answer
            alive->painted = true;
            alive->timer.reset();
        },
        new std::weak_ptr<State>(state));
    waitOn(state);
}

void PaintWatch::waitOn(const std::shared_ptr<State>& state) {
    state->timer = MainLoopTimer(patience, [weak = std::weak_ptr(state)] {
        const auto waiting = weak.lock();
        if (!waiting || waiting->painted) return;
        // Nothing is drawn for a window that nobody sees.
        if (!isLookedAt(GTK_WIDGET(waiting->view))) {
            waitOn(waiting);
            return;
        }
        waiting->painted = true;
        if (const auto call = std::exchange(waiting->onBlank, nullptr)) call();
    });
}

}  // namespace parvela
