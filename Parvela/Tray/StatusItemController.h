#pragma once

#include "Model/AppModel.h"
#include "QuickAdd/QuickAddPopover.h"

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Observable.h>
#include <Platform/MainLoop.h>
#include <Platform/TrayItem.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// Requests to put the keyboard into the quick-add field. Each is one step of the generation.
struct QuickAddFocus {
    Observable<std::int64_t> generation{0};

    void request();
};

/// The program's item in the tray, with the quick-add popover, a small menu, and the running timer beside the icon.
///
/// Without a tray the popover works all the same.
class StatusItemController {
public:
    /// `actions` are what the popover and the menu ask of the rest of the application.
    StatusItemController(GtkApplication* application, std::shared_ptr<AppModel> model,
                         std::shared_ptr<const Clock> clock, QuickAddPopoverActions actions);
    StatusItemController(const StatusItemController&) = delete;
    StatusItemController& operator=(const StatusItemController&) = delete;

    /// A tray is there and shows the item.
    const Observable<bool>& isInTray() const { return item_.isShown(); }

    enum class Focus { keep, field };
    /// Shows the popover, or brings it to the front. The token is what the desktop gave with the user's wish, if
    /// anything.
    void showPopover(Focus focus, const std::optional<std::string>& activationToken = std::nullopt);
    /// Closes the popover when it is shown, else shows it: what the hot key does.
    void togglePopover(const std::optional<std::string>& activationToken);

private:
    QuickAddPopover& popover();
    bool isPopoverShown() const { return popover_ && popover_->isShown(); }
    void clicked(const TrayItem::Activation& activation);
    void show(std::optional<PopoverAnchor> anchor, Focus focus, const std::optional<std::string>& activationToken);
    void hide();
    void timerChanged();
    void tick();
    void updateMenu();

    GtkApplication* application_;
    std::shared_ptr<AppModel> model_;
    std::shared_ptr<const Clock> clock_;
    QuickAddPopoverActions actions_;
    TrayItem item_;
    /// Made when it is first needed, or once the start is over.
    std::unique_ptr<QuickAddPopover> popover_;
    MainLoopTimer popoverPreparation_;
    QuickAddFocus focus_;
    /// Runs only while a timer does.
    MainLoopTimer ticker_;
    /// g_get_monotonic_time() of when the popover went by itself; 0 when the user closed it here.
    std::optional<std::int64_t> dismissedAt_;  ///< when the popover went by itself; monotonic, microseconds
    std::vector<Subscription> subscriptions_;
    Connection schemeChanged_;
};

}  // namespace parvela
