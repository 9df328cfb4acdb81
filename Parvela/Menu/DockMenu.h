#pragma once

#include "Model/AppModel.h"

#include <Platform/DesktopMenu.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <vector>

namespace parvela {

/// What the entries of the dock's menu do.
struct DockMenuActions {
    std::function<void()> newTask;
    std::function<void()> newWindow;
    std::function<void(const TaskSummary&)> openDueTask;
    std::function<void(const Board&)> openBoard;
};

/// The entries for the model as it is now.
std::vector<DesktopMenuEntry> dockMenuEntries(const AppModel& model, const DockMenuActions& actions);

/// The menu of the program's icon in docks that show one: new task, new window, what is due today, the boards. It is
/// made anew when the model has changed; a dock that is about to show it has a due list refreshed that is old.
class DockMenu {
public:
    /// To be made only where there is a session bus.
    DockMenu(std::shared_ptr<AppModel> model, DockMenuActions actions);
    DockMenu(const DockMenu&) = delete;
    DockMenu& operator=(const DockMenu&) = delete;

    /// Where on the session bus the menu is found.
    static constexpr const char* objectPath = "/app/parvela/Parvela/DockMenu";

private:
    void rebuildSoon();
    void refreshWhenOld();

    std::shared_ptr<AppModel> model_;
    DockMenuActions actions_;
    DesktopMenu menu_;
    MainLoopTimer rebuild_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
