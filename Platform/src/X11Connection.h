#pragma once

#include <functional>
#include <utility>

#include <X11/Xlib.h>
#include <glib-unix.h>

namespace parvela {

/// A connection to the display of our own, closed at the end. `arrived` is called from the main loop when there is
/// something to read.
class X11Connection {
public:
    X11Connection(Display* opened, std::function<void()> arrived) : display_(opened), arrived_(std::move(arrived)) {
        source_ = g_unix_fd_add(
            ConnectionNumber(display_), G_IO_IN,
            [](int, GIOCondition, gpointer self) -> gboolean {
                static_cast<X11Connection*>(self)->arrived_();
                return G_SOURCE_CONTINUE;
            },
            this);
    }
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;
    ~X11Connection() {
        g_source_remove(source_);
        XCloseDisplay(display_);
    }

private:
    Display* display_;
    std::function<void()> arrived_;
    guint source_ = 0;
};

}  // namespace parvela
