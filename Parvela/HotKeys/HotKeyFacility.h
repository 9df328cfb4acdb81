#pragma once

#include <ParvelaKit/Task.h>
#include <Platform/KeyCode.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gdk/gdk.h>

namespace parvela {

/// How this desktop lets a program have shortcuts that work everywhere.
enum class HotKeyAvailability {
    keys,    ///< any key, at once
    portal,  ///< by asking the desktop, which may ask the user, who may choose other keys
    none,    ///< not at all: the user can bind "parvela quick-add" in the desktop's own settings
};

/// The desktop's own way to give a program a shortcut that works everywhere.
class HotKeyFacility {
public:
    virtual ~HotKeyFacility() = default;

    /// Called for each press with the id of the shortcut. The token, when there is one, lets a window come to the
    /// front.
    std::function<void(std::uint32_t id, const std::optional<std::string>& activationToken)> onPressed;
    /// Called when availability() has changed.
    std::function<void()> onAvailabilityChanged;

    virtual HotKeyAvailability availability() const = 0;
    /// Whether `id` now stands for the shortcut. False when another program owns it, the keyboard has no such key, or
    /// the desktop or the user refuse. May take as long as the user thinks.
    virtual Task<bool> take(std::uint32_t id, HotKey key) = 0;
    /// Gives a shortcut up; an unknown id is ignored.
    virtual void release(std::uint32_t id) = 0;
    /// The X keysym of the key without modifiers in the current layout; none when there is no such key.
    virtual std::optional<std::uint32_t> keysym(std::uint32_t keyCode) const = 0;

    /// What the display offers: key grabs on X11, elsewhere the portal.
    static std::unique_ptr<HotKeyFacility> forDisplay(GdkDisplay* display);
};

}  // namespace parvela
