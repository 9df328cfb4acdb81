#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace parvela {

/// One entry of a menu that another program shows: a tray or a dock.
struct DesktopMenuEntry {
    enum class Kind { item, separator };

    Kind kind = Kind::item;
    std::string label{};  ///< as shown; no mnemonics
    /// An entry with neither action nor children is shown disabled.
    std::function<void()> action{};
    std::vector<DesktopMenuEntry> children{};
    std::string description{};  ///< more about it, for programs that read menus out
    std::string icon{};         ///< the bytes of a small PNG image, shown by hosts that can; empty for none
};

/// A menu exported on the session bus by com.canonical.dbusmenu.
class DesktopMenu {
public:
    /// To be made only where there is a session bus.
    explicit DesktopMenu(const std::string& objectPath);
    DesktopMenu(const DesktopMenu&) = delete;
    DesktopMenu& operator=(const DesktopMenu&) = delete;
    ~DesktopMenu();

    /// May be called by an entry's action.
    void set(const std::vector<DesktopMenuEntry>& entries);

    /// A host is about to show the menu: what is set now may still be seen. Not every host tells.
    std::function<void()> onAboutToShow;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace parvela
