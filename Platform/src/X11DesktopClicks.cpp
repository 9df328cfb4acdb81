#include "X11Connection.h"

#include <Platform/X11DesktopClicks.h>

#include <array>
#include <optional>
#include <utility>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace parvela {

namespace {

/// Greater numbers are wheels and side buttons.
constexpr int lastClickingButton = 3;

/// The opcode of the input extension, if it tells about presses that others grab (since 2.1).
std::optional<int> inputExtension(Display* display) {
    int opcode = 0;
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 1;
    if (!XQueryExtension(display, "XInputExtension", &opcode, &event, &error)) return std::nullopt;
    if (XIQueryVersion(display, &major, &minor) != Success) return std::nullopt;
    return major > 2 || (major == 2 && minor >= 1) ? std::optional(opcode) : std::nullopt;
}

}  // namespace

class X11DesktopClicks::Impl {
public:
    Impl(Display* display, int opcode)
        : display_(display),
          root_(DefaultRootWindow(display)),
          opcode_(opcode),
          connection_(display, [this] { drain(); }) {}

    void start(std::function<void()> action) {
        action_ = std::move(action);
        select(true);
    }

    void stop() {
        action_ = nullptr;
        select(false);
    }

private:
    void select(bool presses) {
        std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
        if (presses) XISetMask(bits.data(), XI_RawButtonPress);
        XIEventMask mask{
            .deviceid = XIAllMasterDevices, .mask_len = static_cast<int>(bits.size()), .mask = bits.data()};
        XISelectEvents(display_, root_, &mask, 1);
        XFlush(display_);
    }

    void drain() {
        bool clicked = false;
        while (XPending(display_) > 0) {
            XEvent event{};
            XNextEvent(display_, &event);
            if (event.type != GenericEvent || event.xcookie.extension != opcode_) continue;
            if (!XGetEventData(display_, &event.xcookie)) continue;
            const auto* const press = static_cast<const XIRawEvent*>(event.xcookie.data);
            const bool counts = event.xcookie.evtype == XI_RawButtonPress && press->detail <= lastClickingButton;
            XFreeEventData(display_, &event.xcookie);
            clicked = clicked || (counts && isOnDesktop());
        }
        // The action may stop or destroy this.
        const auto action = action_;
        if (clicked && action) action();
    }

    /// Where the pointer is there is no window, or only one that shows nothing, such as a window manager puts there.
    bool isOnDesktop() const {
        Window root = None;
        Window child = None;
        int rootX = 0;
        int rootY = 0;
        int x = 0;
        int y = 0;
        unsigned int buttons = 0;
        if (!XQueryPointer(display_, root_, &root, &child, &rootX, &rootY, &x, &y, &buttons)) return false;
        if (child == None) return true;
        // A window may go at any moment; asking for it must not end the program.
        const XErrorHandler previous = XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
        XWindowAttributes attributes{};
        const bool isThere = XGetWindowAttributes(display_, child, &attributes) != 0;
        XSetErrorHandler(previous);
        return isThere && attributes.c_class == InputOnly;
    }

    Display* display_;
    Window root_;
    int opcode_;
    std::function<void()> action_;
    X11Connection connection_;
};

std::unique_ptr<X11DesktopClicks> X11DesktopClicks::open() {
    Display* const display = XOpenDisplay(nullptr);
    if (!display) return nullptr;
    const auto opcode = inputExtension(display);
    if (!opcode) {
        XCloseDisplay(display);
        return nullptr;
    }
    return std::unique_ptr<X11DesktopClicks>(new X11DesktopClicks(std::make_unique<Impl>(display, *opcode)));
}

X11DesktopClicks::X11DesktopClicks(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {
}

X11DesktopClicks::~X11DesktopClicks() = default;

void X11DesktopClicks::start(std::function<void()> action) {
    impl_->start(std::move(action));
}

void X11DesktopClicks::stop() {
    impl_->stop();
}

}  // namespace parvela
