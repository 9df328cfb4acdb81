#include "Support/WindowPlacement.h"

#include <ParvelaKit/GLibPtr.h>

#include <array>
#include <cmath>
#include <cstring>
#include <memory>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <gdk/x11/gdkx.h>

namespace parvela {

namespace {

GdkSurface* surfaceOf(GtkWindow* window) {
    return gtk_native_get_surface(GTK_NATIVE(window));
}

/// An X window and its connection.
struct XWindow {
    Display* display;
    Window id;
    double scale;
};

std::optional<XWindow> xWindowOf(GtkWindow* window) {
    GdkSurface* const surface = surfaceOf(window);
    if (!surface || !GDK_IS_X11_SURFACE(surface)) return std::nullopt;
    return XWindow{gdk_x11_display_get_xdisplay(gdk_surface_get_display(surface)), gdk_x11_surface_get_xid(surface),
                   static_cast<double>(gdk_surface_get_scale_factor(surface))};
}

bool hasState(GtkWindow* window, GdkToplevelState wanted) {
    GdkSurface* const surface = surfaceOf(window);
    return surface && GDK_IS_TOPLEVEL(surface) && (gdk_toplevel_get_state(GDK_TOPLEVEL(surface)) & wanted) != 0;
}

WindowFrame areaOf(GdkMonitor* monitor) {
    GdkRectangle area;
    if (GDK_IS_X11_MONITOR(monitor)) {
        gdk_x11_monitor_get_workarea(monitor, &area);
    } else {
        gdk_monitor_get_geometry(monitor, &area);
    }
    return WindowFrame{static_cast<double>(area.x), static_cast<double>(area.y), static_cast<double>(area.width),
                       static_cast<double>(area.height)};
}

}  // namespace

std::optional<WindowPosition> windowPosition(GtkWindow* window) {
    constexpr auto elsewhere =
        static_cast<GdkToplevelState>(GDK_TOPLEVEL_STATE_MINIMIZED | GDK_TOPLEVEL_STATE_MAXIMIZED |
                                      GDK_TOPLEVEL_STATE_FULLSCREEN | GDK_TOPLEVEL_STATE_TILED);
    const auto x = xWindowOf(window);
    if (!x || !gtk_widget_get_mapped(GTK_WIDGET(window)) || hasState(window, elsewhere)) return std::nullopt;
    int left = 0;
    int top = 0;
    Window child = 0;
    if (!XTranslateCoordinates(x->display, x->id, DefaultRootWindow(x->display), 0, 0, &left, &top, &child)) {
        return std::nullopt;
    }
    return WindowPosition{left / x->scale, top / x->scale};
}

WindowShadow shadowOf(GtkWindow* window) {
    constexpr WindowShadow none{0, 0, 0, 0};
    const auto x = xWindowOf(window);
    if (!x) return none;
    const Atom extents = XInternAtom(x->display, "_GTK_FRAME_EXTENTS", True);
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    if (extents == 0 || XGetWindowProperty(x->display, x->id, extents, 0, 4, False, XA_CARDINAL, &type, &format, &count,
                                           &left, &data) != 0) {
        return none;
    }
    const std::unique_ptr<unsigned char, int (*)(void*)> owned(data, XFree);
    if (type != XA_CARDINAL || format != 32 || count != 4) return none;  // no shadow is drawn
    std::array<long, 4> sides{};
    std::memcpy(sides.data(), data, sizeof sides);
    const auto side = [&](std::size_t index) { return static_cast<double>(sides[index]) / x->scale; };
    return {.left = side(0), .right = side(1), .top = side(2), .bottom = side(3)};
}

std::optional<WindowPosition> pointerPosition(GtkWindow* window) {
    const auto x = xWindowOf(window);
    if (!x) return std::nullopt;
    Window root = 0;
    Window child = 0;
    int left = 0;
    int top = 0;
    int leftInside = 0;
    int topInside = 0;
    unsigned int buttons = 0;
    if (!XQueryPointer(x->display, DefaultRootWindow(x->display), &root, &child, &left, &top, &leftInside, &topInside,
                       &buttons)) {
        return std::nullopt;
    }
    return WindowPosition{left / x->scale, top / x->scale};
}

void moveWindow(GtkWindow* window, WindowPosition position) {
    gtk_widget_realize(GTK_WIDGET(window));
    const auto x = xWindowOf(window);
    if (!x) return;
    const int left = static_cast<int>(std::lround(position.x * x->scale));
    const int top = static_cast<int>(std::lround(position.y * x->scale));
    if (!gtk_widget_get_mapped(GTK_WIDGET(window))) {
        // Window managers choose a place themselves unless the user is said to have chosen it.
        const std::unique_ptr<XSizeHints, int (*)(void*)> hints(XAllocSizeHints(), XFree);
        long supplied = 0;
        XGetWMNormalHints(x->display, x->id, hints.get(), &supplied);
        hints->flags |= USPosition;
        XSetWMNormalHints(x->display, x->id, hints.get());
    }
    XMoveWindow(x->display, x->id, left, top);
    XFlush(x->display);
}

void moveAndResizeWindow(GtkWindow* window, const WindowFrame& frame) {
    const auto x = xWindowOf(window);
    if (!x) return;
    const WindowShadow shadow = shadowOf(window);
    const auto pixels = [&](double points) { return std::lround(points * x->scale); };
    // The toolkit does not ask again for a size that the window manager has once refused.
    XMoveResizeWindow(x->display, x->id, static_cast<int>(pixels(frame.x)), static_cast<int>(pixels(frame.y)),
                      static_cast<unsigned int>(pixels(frame.width + shadow.left + shadow.right)),
                      static_cast<unsigned int>(pixels(frame.height + shadow.top + shadow.bottom)));
    XFlush(x->display);
}

bool isMinimized(GtkWindow* window) {
    return hasState(window, GDK_TOPLEVEL_STATE_MINIMIZED);
}

std::vector<WindowFrame> monitorAreas(GdkDisplay* display) {
    std::vector<WindowFrame> areas;
    GListModel* const monitors = gdk_display_get_monitors(display);
    for (guint index = 0; index < g_list_model_get_n_items(monitors); ++index) {
        const auto monitor = Ref<GdkMonitor>::adopt(GDK_MONITOR(g_list_model_get_item(monitors, index)));
        areas.push_back(areaOf(monitor.get()));
    }
    return areas;
}

std::vector<WindowFrame> monitorFrames(GdkDisplay* display) {
    std::vector<WindowFrame> frames;
    GListModel* const monitors = gdk_display_get_monitors(display);
    for (guint index = 0; index < g_list_model_get_n_items(monitors); ++index) {
        const auto monitor = Ref<GdkMonitor>::adopt(GDK_MONITOR(g_list_model_get_item(monitors, index)));
        GdkRectangle whole;
        gdk_monitor_get_geometry(monitor.get(), &whole);
        frames.push_back({static_cast<double>(whole.x), static_cast<double>(whole.y), static_cast<double>(whole.width),
                          static_cast<double>(whole.height)});
    }
    return frames;
}

std::optional<WindowFrame> monitorAreaOf(GtkWindow* window) {
    GdkSurface* const surface = surfaceOf(window);
    if (!surface) return std::nullopt;
    GdkMonitor* const monitor = gdk_display_get_monitor_at_surface(gdk_surface_get_display(surface), surface);
    return monitor ? std::optional(areaOf(monitor)) : std::nullopt;
}

}  // namespace parvela
