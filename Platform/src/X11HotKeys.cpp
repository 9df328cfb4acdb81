#include "X11Connection.h"

#include <Platform/MainLoop.h>
#include <Platform/X11HotKeys.h>

#include <array>
#include <map>
#include <utility>
#include <vector>

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

namespace parvela {

namespace {

/// Xlib calls one handler for the whole process, so it is ours only while we wait for the server.
class ErrorTrap {
public:
    explicit ErrorTrap(Display* display) : display_(display) {
        XSync(display, False);
        failed() = false;
        previous_ = XSetErrorHandler([](Display*, XErrorEvent*) {
            failed() = true;
            return 0;
        });
    }
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;
    ~ErrorTrap() {
        XSync(display_, False);
        XSetErrorHandler(previous_);
    }

    bool hasFailed() const {
        XSync(display_, False);
        return failed();
    }

private:
    static bool& failed() {
        static bool flag = false;
        return flag;
    }

    Display* display_;
    XErrorHandler previous_;
};

unsigned maskOf(std::uint32_t modifiers) {
    unsigned mask = 0;
    if (modifiers & KeyModifiers::command) mask |= Mod4Mask;
    if (modifiers & KeyModifiers::shift) mask |= ShiftMask;
    if (modifiers & KeyModifiers::option) mask |= Mod1Mask;
    if (modifiers & KeyModifiers::control) mask |= ControlMask;
    return mask;
}

}  // namespace

class X11HotKeys::Impl {
public:
    explicit Impl(Display* display)
        : display_(display), root_(DefaultRootWindow(display)), connection_(display, [this] { drain(); }) {
        // A key that is held sends presses only, and one release at its end.
        XkbSetDetectableAutoRepeat(display_, True, nullptr);
        numLock_ = findNumLock();
    }
    std::optional<std::uint32_t> add(HotKey key, std::function<void()> action) {
        const std::uint32_t id = nextId_++;
        Grab grab{.mask = maskOf(key.modifiers), .action = std::make_shared<std::function<void()>>(std::move(action))};
        const auto keycode = hardwareKeycode(key.keyCode);
        if (!keycode || !isKeycode(*keycode)) return std::nullopt;
        grab.keycode = static_cast<int>(*keycode);
        if (!take(grab)) return std::nullopt;
        grabs_.emplace(id, std::move(grab));
        drainSoon();
        return id;
    }

    void remove(std::uint32_t id) {
        const auto found = grabs_.extract(id);
        if (found) release(found.mapped());
        drainSoon();
    }

    std::optional<std::uint32_t> keysym(std::uint32_t keyCode) const {
        const auto keycode = hardwareKeycode(keyCode);
        if (!keycode || !isKeycode(*keycode)) return std::nullopt;
        XkbStateRec state{};
        XkbGetState(display_, XkbUseCoreKbd, &state);
        const KeySym symbol = XkbKeycodeToKeysym(display_, static_cast<KeyCode>(*keycode), state.group, 0);
        return symbol == NoSymbol ? std::nullopt : std::optional(static_cast<std::uint32_t>(symbol));
    }

private:
    struct Grab {
        int keycode = 0;
        unsigned mask = 0;
        bool isHeld = false;
        std::shared_ptr<std::function<void()>> action;
    };

    bool isKeycode(std::uint32_t keycode) const {
        int least = 0;
        int greatest = 0;
        XDisplayKeycodes(display_, &least, &greatest);
        return static_cast<int>(keycode) >= least && static_cast<int>(keycode) <= greatest;
    }

    /// Grabs name exact modifiers; the locks may be on or off.
    std::array<unsigned, 4> variants(unsigned mask) const {
        return {mask, mask | LockMask, mask | numLock_, mask | LockMask | numLock_};
    }

    bool take(const Grab& grab) {
        bool taken = false;
        {
            const ErrorTrap trap(display_);
            for (const unsigned mask : variants(grab.mask)) {
                XGrabKey(display_, grab.keycode, mask, root_, False, GrabModeAsync, GrabModeAsync);
            }
            taken = !trap.hasFailed();
        }
        if (!taken) release(grab);
        return taken;
    }

    void release(const Grab& grab) {
        const ErrorTrap trap(display_);
        for (const unsigned mask : variants(grab.mask)) XUngrabKey(display_, grab.keycode, mask, root_);
    }

    unsigned findNumLock() const {
        unsigned mask = 0;
        const KeyCode key = XKeysymToKeycode(display_, XK_Num_Lock);
        XModifierKeymap* const map = XGetModifierMapping(display_);
        for (int index = 0; key != 0 && index < 8 * map->max_keypermod; ++index) {
            if (map->modifiermap[index] == key) mask = 1U << (index / map->max_keypermod);
        }
        XFreeModifiermap(map);
        return mask;
    }

    /// Waiting for the server may have read events already; nothing announces those.
    void drainSoon() {
        soon_ = MainLoopTimer(std::chrono::milliseconds(0), [this] { drain(); });
    }

    void drain() {
        std::vector<std::shared_ptr<std::function<void()>>> pressed;
        while (XPending(display_) > 0) {
            XEvent event{};
            XNextEvent(display_, &event);
            if (event.type == MappingNotify) {
                mappingChanged(event.xmapping);
            } else if (event.type == KeyPress || event.type == KeyRelease) {
                keyChanged(event.xkey, pressed);
            }
        }
        // An action may remove or add shortcuts.
        for (const auto& action : pressed) (*action)();
    }

    void keyChanged(const XKeyEvent& event, std::vector<std::shared_ptr<std::function<void()>>>& pressed) {
        constexpr unsigned counted = ShiftMask | ControlMask | Mod1Mask | Mod4Mask;
        for (auto& [id, grab] : grabs_) {
            if (grab.keycode != static_cast<int>(event.keycode)) continue;
            if (event.type == KeyRelease) {
                grab.isHeld = false;
            } else if ((event.state & counted) == grab.mask && !std::exchange(grab.isHeld, true)) {
                pressed.push_back(grab.action);
            }
        }
    }

    void mappingChanged(XMappingEvent& event) {
        XRefreshKeyboardMapping(&event);
        const unsigned numLock = findNumLock();
        if (numLock == numLock_) return;
        for (const auto& [id, grab] : grabs_) release(grab);
        numLock_ = numLock;
        for (const auto& [id, grab] : grabs_) (void)take(grab);
    }

    Display* display_;
    Window root_;
    unsigned numLock_ = 0;
    std::uint32_t nextId_ = 1;
    std::map<std::uint32_t, Grab> grabs_;
    MainLoopTimer soon_;
    X11Connection connection_;  ///< its end ends the grabs
};

std::unique_ptr<X11HotKeys> X11HotKeys::open() {
    Display* const display = XOpenDisplay(nullptr);
    if (!display) return nullptr;
    return std::unique_ptr<X11HotKeys>(new X11HotKeys(std::make_unique<Impl>(display)));
}

X11HotKeys::X11HotKeys(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {
}

X11HotKeys::~X11HotKeys() = default;

std::optional<std::uint32_t> X11HotKeys::add(HotKey key, std::function<void()> action) {
    return impl_->add(key, std::move(action));
}

void X11HotKeys::remove(std::uint32_t id) {
    impl_->remove(id);
}

std::optional<std::uint32_t> X11HotKeys::keysym(std::uint32_t keyCode) const {
    return impl_->keysym(keyCode);
}

}  // namespace parvela
