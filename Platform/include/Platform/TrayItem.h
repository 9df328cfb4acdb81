#pragma once

#include <ParvelaKit/Observable.h>
#include <Platform/DesktopMenu.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

using TrayMenuEntry = DesktopMenuEntry;

/// A square icon: ARGB, 8 bits each in this order in memory, row by row.
struct TrayIcon {
    int size = 0;  ///< pixels a side
    std::vector<std::uint8_t> pixels;
};

/// An item in the desktop's tray, as StatusNotifierItem with a menu by com.canonical.dbusmenu.
///
/// Whether a tray shows it is known a moment after construction and may change at any time. Hosts differ: some show the
/// label beside the icon and some do not, some open the menu on any click; so what matters stands in the title and the
/// tooltip too.
class TrayItem {
public:
    struct Identity {
        std::string id;
        std::string title;
        std::string iconName;         ///< of the icon theme; for hosts that ignore the pixels
        std::string iconFolder;       ///< an extra place for the theme icon; may be empty
        std::vector<TrayIcon> icons;  ///< in several sizes
    };

    explicit TrayItem(Identity identity);
    TrayItem(const TrayItem&) = delete;
    TrayItem& operator=(const TrayItem&) = delete;
    ~TrayItem();

    struct Activation {
        int x = 0;  ///< where the user clicked, in device pixels of the whole screen
        int y = 0;
        std::optional<std::string> token;  ///< lets a window come to the front
    };

    /// A left click, or what stands for it.
    std::function<void(const Activation&)> onActivate;

    /// A tray is there and shows the item.
    const Observable<bool>& isShown() const;

    void setIcons(std::vector<TrayIcon> icons);
    /// A short text beside the icon, its distance from the icon included; empty for none.
    void setLabel(const std::string& label);
    void setToolTip(const std::string& text);
    void setMenu(std::vector<TrayMenuEntry> menu);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace parvela
