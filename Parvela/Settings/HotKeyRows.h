#pragma once

#include "HotKeys/HotKeyRecorder.h"
#include "HotKeys/QuickAddHotKey.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Observable.h>
#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/Task.h>

#include <memory>
#include <optional>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// The shortcut that opens quick add from everywhere: on or off, which keys, and what to do where there is none.
class HotKeyRows : public std::enable_shared_from_this<HotKeyRows> {
public:
    /// `interface` holds the rows.
    static std::shared_ptr<HotKeyRows> create(const Interface& interface, Preferences preferences,
                                              std::shared_ptr<QuickAddHotKey> hotKey);
    HotKeyRows(const HotKeyRows&) = delete;
    HotKeyRows& operator=(const HotKeyRows&) = delete;

private:
    HotKeyRows(const Interface& interface, Preferences preferences, std::shared_ptr<QuickAddHotKey> hotKey);
    void start();
    void switched();
    void recorded(HotKey key);
    void show();
    void copyCommand();
    /// Registers what the preferences say; when that is refused, `earlier` comes back.
    static Task<void> apply(std::weak_ptr<HotKeyRows> self, std::shared_ptr<QuickAddHotKey> hotKey,
                            std::optional<HotKey> earlier);

    Preferences preferences_;
    std::shared_ptr<QuickAddHotKey> hotKey_;
    GtkSwitch* enabled_;
    AdwActionRow* shortcut_;
    GtkLabel* message_;
    GtkWidget* commandRow_;
    GtkButton* copy_;
    HotKeyRecorder recorder_;
    bool filling_ = false;
    /// The user's last choice was refused and taken back.
    bool wasRefused_ = false;
    std::vector<Connection> connections_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
