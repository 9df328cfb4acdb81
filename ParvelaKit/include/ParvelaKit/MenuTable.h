#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace parvela {

/// The application's main menu as data: what is shown, which action it runs, and with which keys.
namespace menuTable {

/// Combined with "|".
enum class Modifiers : std::uint8_t { none = 0, control = 1, shift = 2, alt = 4 };
constexpr Modifiers operator|(Modifiers a, Modifiers b) {
    return static_cast<Modifiers>(static_cast<std::uint8_t>(a) | static_cast<std::uint8_t>(b));
}
constexpr bool operator&(Modifiers a, Modifiers b) {
    return (static_cast<std::uint8_t>(a) & static_cast<std::uint8_t>(b)) != 0;
}

/// Who carries an action out.
enum class Target {
    window,  ///< the active main window, or else the application
    application,
    text,  ///< whatever has the keyboard focus: a field or the page
    updater,
};

/// What must be there for an item to be enabled.
enum class Needs { nothing, window, page, backHistory, forwardHistory, board, shell, updater };

enum class Kind {
    action,
    separator,
    boards,  ///< a submenu of the boards that the active window's page has reported
};

struct Item {
    Kind kind = Kind::action;
    std::string_view title;
    std::string_view action;  ///< an action's name, without a group
    std::string_view key;     ///< a key's name as GDK knows it, such as "n" or "bracketleft"; empty for none
    Modifiers modifiers = Modifiers::none;
    Target target = Target::window;
    Needs needs = Needs::nothing;
    /// Told to the action; which of several the item stands for.
    std::optional<int> tag;

    /// The keys as GTK writes an accelerator, such as "<Control><Shift>n"; empty for none.
    std::string accelerator() const;
};

struct Menu {
    std::string_view title;  ///< of the application menu: the application's name
    std::span<const Item> items;
};

/// Application, File, Edit, View, Go, Window and Help.
std::span<const Menu> menus();

/// What the active main window can do at the moment.
struct State {
    bool hasWindow = false;
    bool hasPage = false;  ///< its page has an address
    bool canGoBack = false;
    bool canGoForward = false;
    bool showsBoard = false;
    bool supportsShell = false;  ///< its page takes commands of the native shell
    bool canUpdate = false;
};

bool isEnabled(Needs needs, const State& state);

}  // namespace menuTable

}  // namespace parvela
