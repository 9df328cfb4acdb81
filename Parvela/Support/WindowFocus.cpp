#include "Support/WindowFocus.h"

#include <ParvelaKit/GLibPtr.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>

namespace parvela {

namespace {

Display* xDisplayOf(GdkDisplay* display) {
    return GDK_IS_X11_DISPLAY(display) ? gdk_x11_display_get_xdisplay(display) : nullptr;
}

GdkSurface* xSurfaceOf(GtkWindow* window) {
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(window));
    return surface && GDK_IS_X11_SURFACE(surface) ? surface : nullptr;
}

/// Windows of others may go at any moment; requests about them must not end the program.
class ErrorTrap {
public:
    explicit ErrorTrap(GdkDisplay* display) : display_(display) { gdk_x11_display_error_trap_push(display_); }
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;
    ~ErrorTrap() { gdk_x11_display_error_trap_pop_ignored(display_); }

private:
    GdkDisplay* display_;
};

using XData = GLibPtr<unsigned char, XFree>;

bool isWithin(Display* display, Window window, Window ancestor) {
    while (window != None && window != ancestor) {
        Window root = None;
        Window parent = None;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(display, window, &root, &parent, &children, &count)) return false;
        if (children) XFree(children);
        if (parent == root) return false;
        window = parent;
    }
    return window == ancestor;
}

}  // namespace

std::optional<DesktopWindow> activeWindow(GdkDisplay* display) {
    Display* const x = xDisplayOf(display);
    if (!x) return std::nullopt;
    const ErrorTrap trap(display);
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    XData data;
    const int status = XGetWindowProperty(x, DefaultRootWindow(x),
                                          gdk_x11_get_xatom_by_name_for_display(display, "_NET_ACTIVE_WINDOW"), 0, 1,
                                          False, XA_WINDOW, &type, &format, &count, &left, data.out());
    if (status != Success || type != XA_WINDOW || format != 32 || count != 1) return std::nullopt;
    const Window window = *reinterpret_cast<const Window*>(data.get());
    return window == None ? std::nullopt : std::optional<DesktopWindow>(window);
}

void activate(GdkDisplay* display, DesktopWindow window) {
    Display* const x = xDisplayOf(display);
    if (!x) return;
    const ErrorTrap trap(display);
    constexpr long byUser = 2;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = gdk_x11_get_xatom_by_name_for_display(display, "_NET_ACTIVE_WINDOW");
    event.xclient.format = 32;
    event.xclient.data.l[0] = byUser;
    event.xclient.data.l[1] = static_cast<long>(gdk_x11_display_get_user_time(display));
    XSendEvent(x, DefaultRootWindow(x), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XFlush(x);
}

KeyboardPlace keyboardPlace(GtkWindow* window) {
    GdkSurface* const surface = xSurfaceOf(window);
    if (!surface) return KeyboardPlace::unknown;
    GdkDisplay* const display = gdk_surface_get_display(surface);
    Display* const x = gdk_x11_display_get_xdisplay(display);
    const ErrorTrap trap(display);
    Window focused = None;
    int revertTo = 0;
    XGetInputFocus(x, &focused, &revertTo);
    if (focused == None || focused == PointerRoot) return KeyboardPlace::nowhere;
    return isWithin(x, focused, gdk_x11_surface_get_xid(surface)) ? KeyboardPlace::here : KeyboardPlace::elsewhere;
}

void becomeUtility(GtkWindow* window) {
    gtk_widget_realize(GTK_WIDGET(window));
    GdkSurface* const surface = xSurfaceOf(window);
    if (!surface) return;
    GdkDisplay* const display = gdk_surface_get_display(surface);
    const Atom type = gdk_x11_get_xatom_by_name_for_display(display, "_NET_WM_WINDOW_TYPE_UTILITY");
    XChangeProperty(gdk_x11_display_get_xdisplay(display), gdk_x11_surface_get_xid(surface),
                    gdk_x11_get_xatom_by_name_for_display(display, "_NET_WM_WINDOW_TYPE"), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&type), 1);
    gdk_x11_surface_set_skip_taskbar_hint(surface, TRUE);
    gdk_x11_surface_set_skip_pager_hint(surface, TRUE);
}

void presentForUser(GtkWindow* window, const std::optional<std::string>& token) {
    gtk_widget_realize(GTK_WIDGET(window));
    if (token && !token->empty()) gtk_window_set_startup_id(window, token->c_str());
    if (GdkSurface* const surface = xSurfaceOf(window)) {
        gdk_x11_surface_set_user_time(surface, gdk_x11_get_server_time(surface));
        gtk_window_present(window);
        activate(gdk_surface_get_display(surface), gdk_x11_surface_get_xid(surface));
    } else {
        gtk_window_present(window);
    }
}

std::optional<WindowPosition> pointerPosition(GdkDisplay* display) {
    Display* const x = xDisplayOf(display);
    if (!x) return std::nullopt;
    Window root = None;
    Window child = None;
    int rootX = 0;
    int rootY = 0;
    int windowX = 0;
    int windowY = 0;
    unsigned int mask = 0;
    if (!XQueryPointer(x, DefaultRootWindow(x), &root, &child, &rootX, &rootY, &windowX, &windowY, &mask)) {
        return std::nullopt;
    }
    return WindowPosition{static_cast<double>(rootX), static_cast<double>(rootY)};
}

double scaleOf(GtkWindow* window) {
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(window));
    return surface ? static_cast<double>(gdk_surface_get_scale_factor(surface)) : 1.0;
}

}  // namespace parvela
