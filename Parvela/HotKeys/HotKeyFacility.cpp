#include "HotKeys/HotKeyFacility.h"

#include <Platform/GlobalShortcutsPortal.h>
#include <Platform/X11HotKeys.h>

#include <map>
#include <utility>

#include <gdk/x11/gdkx.h>

namespace parvela {

namespace {

/// The first layout's symbol: a display of another kind than X11 does not tell which layout is in use.
std::optional<std::uint32_t> keysymOnDisplay(GdkDisplay* display, std::uint32_t keyCode) {
    const auto keycode = hardwareKeycode(keyCode);
    guint symbol = 0;
    if (!keycode ||
        !gdk_display_translate_key(display, *keycode, GdkModifierType{}, 0, &symbol, nullptr, nullptr, nullptr)) {
        return std::nullopt;
    }
    return symbol == 0 ? std::nullopt : std::optional<std::uint32_t>(symbol);
}

class GrabbedKeys final : public HotKeyFacility {
public:
    explicit GrabbedKeys(std::unique_ptr<X11HotKeys> keys) : keys_(std::move(keys)) {}

    HotKeyAvailability availability() const override { return HotKeyAvailability::keys; }

    Task<bool> take(std::uint32_t id, HotKey key) override {
        const auto grab = keys_->add(key, [this, id] {
            if (onPressed) onPressed(id, std::nullopt);
        });
        if (grab) grabs_.emplace(id, *grab);
        co_return grab.has_value();
    }

    void release(std::uint32_t id) override {
        const auto grab = grabs_.extract(id);
        if (grab) keys_->remove(grab.mapped());
    }

    std::optional<std::uint32_t> keysym(std::uint32_t keyCode) const override { return keys_->keysym(keyCode); }

private:
    std::unique_ptr<X11HotKeys> keys_;
    std::map<std::uint32_t, std::uint32_t> grabs_;
};

/// The portal binds the shortcuts of a session once, and there is one shortcut here: a new one takes the place of the
/// old one.
class PortalKeys final : public HotKeyFacility {
public:
    explicit PortalKeys(GdkDisplay* display) : display_(display), shared_(std::make_shared<Shared>(*this)) {
        Shared* const shared = shared_.get();  // owns the portal that calls these
        shared->portal.onActivated = [shared](const std::optional<std::string>& token) {
            if (shared->owner && shared->owner->onPressed && shared->id != 0)
                shared->owner->onPressed(shared->id, token);
        };
        // As when the desktop's shell starts anew. One that refuses is not asked again.
        shared->portal.onRevoked = [shared, weak = std::weak_ptr(shared_)] {
            if (shared->owner && shared->id != 0) rebind(weak.lock()).detach();
        };
        look(shared_).detach();
    }
    ~PortalKeys() override { shared_->owner = nullptr; }

    HotKeyAvailability availability() const override { return shared_->availability; }

    Task<bool> take(std::uint32_t id, HotKey key) override {
        shared_->id = id;
        shared_->key = key;
        return rebind(shared_);
    }

    void release(std::uint32_t id) override {
        if (shared_->id != id) return;
        shared_->id = 0;
        shared_->portal.unbind();
    }

    std::optional<std::uint32_t> keysym(std::uint32_t keyCode) const override {
        return keysymOnDisplay(display_, keyCode);
    }

private:
    /// Outlives the facility while the desktop thinks.
    struct Shared {
        explicit Shared(PortalKeys& facility) : owner(&facility) {}

        void setAvailability(HotKeyAvailability now) {
            if (std::exchange(availability, now) == now) return;
            if (owner && owner->onAvailabilityChanged) owner->onAvailabilityChanged();
        }

        PortalKeys* owner;
        GlobalShortcutsPortal portal;
        HotKeyAvailability availability = HotKeyAvailability::none;
        std::uint32_t id = 0;
        HotKey key;
    };

    static Task<void> look(std::shared_ptr<Shared> shared) {
        auto looking = GlobalShortcutsPortal::isOffered();
        const bool offered = co_await looking;
        shared->setAvailability(offered ? HotKeyAvailability::portal : HotKeyAvailability::none);
    }

    static Task<bool> rebind(std::shared_ptr<Shared> shared) {
        const std::uint32_t id = shared->id;
        auto binding = shared->portal.bind(shared->key, "Quick Add");
        const auto bound = co_await binding;
        const bool offered = bound || bound.error() == GlobalShortcutsPortal::Problem::refused;
        if (shared->id != id) co_return false;  // another wish has come meanwhile
        shared->setAvailability(offered ? HotKeyAvailability::portal : HotKeyAvailability::none);
        if (!bound) shared->id = 0;
        co_return bound.has_value();
    }

    GdkDisplay* display_;
    std::shared_ptr<Shared> shared_;
};

}  // namespace

std::unique_ptr<HotKeyFacility> HotKeyFacility::forDisplay(GdkDisplay* display) {
    if (GDK_IS_X11_DISPLAY(display)) {
        if (auto keys = X11HotKeys::open()) return std::make_unique<GrabbedKeys>(std::move(keys));
    }
    // Grabs on an X server beside a Wayland compositor miss the keys of most windows.
    return std::make_unique<PortalKeys>(display);
}

}  // namespace parvela
