#pragma once

#include "HotKeys/HotKeyFacility.h"

#include <ParvelaKit/Observable.h>
#include <ParvelaKit/Task.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace parvela {

/// The registry of the shortcuts that work everywhere.
///
/// Held by a shared pointer: a registration that waits for the desktop keeps the center alive.
class HotKeyCenter : public std::enable_shared_from_this<HotKeyCenter> {
public:
    /// The token, when there is one, lets a window come to the front.
    using Action = std::function<void(const std::optional<std::string>& activationToken)>;

    explicit HotKeyCenter(std::unique_ptr<HotKeyFacility> facility);
    HotKeyCenter(const HotKeyCenter&) = delete;
    HotKeyCenter& operator=(const HotKeyCenter&) = delete;

    /// Not known before the desktop has answered: `none` until then.
    const Observable<HotKeyAvailability>& availability() const noexcept { return availability_; }

    /// An id, never used again; none when the desktop refuses, for example because another program owns the shortcut.
    /// Each press then runs `action` in a later turn of the main loop.
    Task<std::optional<std::uint32_t>> registerKey(HotKey key, Action action);
    /// Takes the shortcut and its action back. An unknown id is ignored.
    void unregister(std::uint32_t id);

    /// For people, such as "⌃⌥Space": modifiers in a fixed order, then the key as the current layout names it.
    std::string displayString(HotKey key) const;
    /// The same as GTK writes an accelerator, such as "<Control><Alt>space"; empty when the layout has no name for it.
    std::string accelerator(HotKey key) const;

    /// While the subscription lives, presses of registered shortcuts go to `receiver` instead of their actions.
    [[nodiscard]] Subscription divert(std::function<void(HotKey)> receiver);

private:
    struct Registration {
        HotKey key;
        Action action;
    };

    static Task<std::optional<std::uint32_t>> registerKey(std::shared_ptr<HotKeyCenter> self, HotKey key,
                                                          Action action);
    void pressed(std::uint32_t id, const std::optional<std::string>& activationToken);

    std::unique_ptr<HotKeyFacility> facility_;
    Observable<HotKeyAvailability> availability_;
    std::map<std::uint32_t, Registration> registrations_;
    std::weak_ptr<std::function<void(HotKey)>> diversion_;
    std::uint32_t nextId_ = 1;
};

}  // namespace parvela
