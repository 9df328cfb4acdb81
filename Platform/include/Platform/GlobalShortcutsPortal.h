#pragma once

#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>
#include <Platform/KeyCode.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace parvela {

/// One shortcut that works everywhere, by the desktop's org.freedesktop.portal.GlobalShortcuts: the way on Wayland. The
/// desktop may ask the user, who may choose other keys.
class GlobalShortcutsPortal {
public:
    enum class Problem {
        unavailable,  ///< this desktop has no such portal
        refused,      ///< the user or the desktop said no
    };

    GlobalShortcutsPortal();
    GlobalShortcutsPortal(const GlobalShortcutsPortal&) = delete;
    GlobalShortcutsPortal& operator=(const GlobalShortcutsPortal&) = delete;
    ~GlobalShortcutsPortal();

    /// The shortcut was pressed. The token, when there is one, lets a window come to the front.
    std::function<void(const std::optional<std::string>& activationToken)> onActivated;
    /// The desktop took the shortcut back, or has ended and may have started anew.
    std::function<void()> onRevoked;

    /// Whether this desktop has such a portal. Asks the user nothing.
    static Task<bool> isOffered();

    /// Gives up an earlier shortcut and asks for this one; `description` is what the user reads. The result is the
    /// desktop's own text for the keys, which may be empty. May take as long as the user thinks.
    Task<Result<std::string, Problem>> bind(HotKey key, std::string description);
    void unbind();

    /// The keys as the Shortcuts specification spells them, such as "CTRL+ALT+space"; none for keys it cannot name.
    static std::optional<std::string> trigger(HotKey key);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace parvela
