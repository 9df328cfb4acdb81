#pragma once

#include <Platform/KeyCode.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace parvela {

/// Shortcuts that work in every program of an X11 session, by grabbing keys. A grab follows the place of the key, so it
/// works in every keyboard layout and with Caps Lock or Num Lock on.
class X11HotKeys {
public:
    /// Empty without an X display. The connection is its own, apart from the toolkit's.
    static std::unique_ptr<X11HotKeys> open();
    X11HotKeys(const X11HotKeys&) = delete;
    X11HotKeys& operator=(const X11HotKeys&) = delete;
    ~X11HotKeys();

    /// An id, never used again; none when another program owns the shortcut or the keyboard has no such key. `action`
    /// runs in the main loop, once for each press however long the key is held.
    std::optional<std::uint32_t> add(HotKey key, std::function<void()> action);
    /// An unknown id is ignored.
    void remove(std::uint32_t id);

    /// The X keysym of the key without modifiers in the current layout; none when there is no such key.
    std::optional<std::uint32_t> keysym(std::uint32_t keyCode) const;

private:
    class Impl;
    explicit X11HotKeys(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace parvela
