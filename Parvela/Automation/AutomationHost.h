#pragma once

#include "Automation/AutomationDoors.h"
#include "Automation/LauncherActions.h"
#include "Model/AppModel.h"
#include "Model/NotificationCentre.h"

#include <Platform/MainLoop.h>

#include <functional>
#include <memory>

#include <adwaita.h>

namespace parvela {

/// What automation needs of the application.
struct AutomationNeeds {
    GApplication* application = nullptr;
    std::shared_ptr<AppModel> model;
    std::shared_ptr<NotificationCentre> notifications;
    OfflineQueue* queue = nullptr;  ///< must outlive the host
    /// Without those that the model itself can serve.
    AutomationSurfaces surfaces;
    std::function<void()> showQuickAdd;
    /// The window in front, or null.
    std::function<GtkWindow*()> frontWindow;
    /// The user can call the program back when it shows no window.
    std::function<bool()> isReachable;
};

/// The application's side of automation: its objects on the bus, its launcher actions, and the end of a program that
/// the bus started and that nobody sees.
class AutomationHost {
public:
    /// To be made before the application takes its name on the bus.
    AutomationHost();

    /// The launch is done: calls are carried out from now on.
    void open(AutomationNeeds needs);

    /// The bus started this program: for a call, or for a launcher, which then asks for a window.
    static bool isService(GApplication* application);

private:
    void endWhenUnused();

    AutomationNeeds needs_;
    AutomationDoors doors_;
    std::shared_ptr<KnownTasks> known_;
    std::unique_ptr<LauncherActions> launcherActions_;
    Subscription linkChanged_;
    Subscription serverChanged_;
    Subscription tasksChanged_;
    MainLoopTimer unused_;
};

}  // namespace parvela
