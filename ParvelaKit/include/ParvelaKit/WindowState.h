#pragma once

#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/ServerConfig.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// A rectangle of the desktop in its points, y downwards.
struct WindowFrame {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    static constexpr double defaultWidth = 1280;
    static constexpr double defaultHeight = 820;
    static constexpr double minimumWidth = 800;
    static constexpr double minimumHeight = 520;

    bool operator==(const WindowFrame&) const = default;

    /// "{{x, y}, {width, height}}".
    std::string text() const;
    /// None unless it is such a text with finite numbers and a size.
    static std::optional<WindowFrame> parse(std::string_view text);

    /// This frame where the user can reach it: not smaller than a window may be, not larger than its monitor, and moved
    /// onto the nearest one when hardly any of its top edge is on any. `monitors` are the areas that windows may cover.
    WindowFrame onMonitors(std::span<const WindowFrame> monitors) const;
    /// Moved so that it lies within `area`, or from its corner on when it is larger.
    WindowFrame inside(const WindowFrame& area) const;
};

/// The frame of a new window: where the last one was closed, or where earlier versions had it; none for the default
/// size.
std::optional<WindowFrame> newWindowFrame(const Preferences& preferences);

/// The windows and tabs that are open, as they are kept from one launch to the next.
struct WindowState {
    /// One window.
    struct Group {
        std::string frame;              ///< as WindowFrame writes it; empty when the place is not known
        std::vector<std::string> tabs;  ///< their URLs, in order
        std::int64_t selected = 0;      ///< index into `tabs`
        bool miniaturized = false;
        bool maximized = false;

        bool operator==(const Group&) const = default;
    };

    std::vector<Group> groups;

    bool operator==(const WindowState&) const = default;

    std::string json() const;
    /// None when any part of it is damaged.
    static std::optional<WindowState> fromJson(std::string_view json);

    static constexpr std::size_t maximumTabs = 500;

    /// What of it may be opened again: tabs that show the web app or its API site, `maximumTabs` in all. A window that
    /// loses all its tabs shows the start page; one that had none goes. `selected` is an index into what is left.
    WindowState restorable(const ServerConfig& server) const;
};

}  // namespace parvela
