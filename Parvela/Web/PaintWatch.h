#pragma once

#include <functional>
#include <memory>

#include <webkit/webkit.h>

namespace parvela {

/// Notices that a page has loaded in a window that the user looks at, and yet is never drawn: what some graphics
/// drivers do to web views. Watches until the first page has been drawn.
class PaintWatch {
public:
    /// `onBlank` is called once at most.
    PaintWatch(WebKitWebView* view, std::function<void()> onBlank);
    PaintWatch(const PaintWatch&) = delete;
    PaintWatch& operator=(const PaintWatch&) = delete;

private:
    struct State;
    static void ask(const std::shared_ptr<State>& state);
    static void waitOn(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_;
};

}  // namespace parvela
