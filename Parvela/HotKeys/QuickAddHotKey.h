#pragma once

#include "HotKeys/HotKeyCenter.h"

#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/Task.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace parvela {

/// The shortcut that opens and closes quick add from everywhere, as the preferences say.
///
/// Held by a shared pointer: a registration that waits for the desktop keeps it alive.
class QuickAddHotKey : public std::enable_shared_from_this<QuickAddHotKey> {
public:
    enum class State {
        off,      ///< switched off in the preferences
        waiting,  ///< the desktop is being asked
        works,
        refused,  ///< another program owns the shortcut, or the desktop or the user said no
    };

    QuickAddHotKey(std::shared_ptr<HotKeyCenter> hotKeys, Preferences preferences, HotKeyCenter::Action action)
        : center(std::move(hotKeys)), preferences_(std::move(preferences)), action_(std::move(action)) {}

    const std::shared_ptr<HotKeyCenter> center;

    Observable<State> state{State::off};
    /// The keys in force as GTK writes an accelerator; empty for none.
    Observable<std::string> accelerator;

    /// Gives up the shortcut in force and registers the one in the preferences. True when that worked, or the shortcut
    /// is switched off. To be called at launch and after every change.
    Task<bool> apply();

    /// What the preferences say, switched on or not.
    HotKey key() const { return {.keyCode = preferences_.hotKeyCode(), .modifiers = preferences_.hotKeyModifiers()}; }

private:
    static Task<bool> apply(std::shared_ptr<QuickAddHotKey> self);

    Preferences preferences_;
    HotKeyCenter::Action action_;
    std::optional<std::uint32_t> hotKeyID_;
    /// Tells an answer to an earlier wish from one to the latest.
    std::uint64_t wishes_ = 0;
};

}  // namespace parvela
