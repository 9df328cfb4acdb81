#pragma once

#include <cstdint>
#include <optional>

namespace parvela {

/// Settings name a key by its place on the keyboard, with the virtual key codes that the other desktop programs of
/// Parvela use (49 is the space bar); X11 and Wayland name places by the kernel's codes plus 8. None for a key without
/// a twin.
std::optional<std::uint32_t> hardwareKeycode(std::uint32_t keyCode);
std::optional<std::uint32_t> keyCodeOf(std::uint32_t hardwareKeycode);

/// The modifiers that settings store, as bits of a mask.
struct KeyModifiers {
    static constexpr std::uint32_t command = 0x0100;  ///< the Super key here
    static constexpr std::uint32_t shift = 0x0200;
    static constexpr std::uint32_t option = 0x0800;  ///< Alt
    static constexpr std::uint32_t control = 0x1000;
};

/// A key with its modifiers.
struct HotKey {
    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;
    bool operator==(const HotKey&) const = default;
};

}  // namespace parvela
