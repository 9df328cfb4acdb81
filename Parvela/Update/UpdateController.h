#pragma once

#include "Support/DesktopServices.h"
#include "Update/UpdateDialog.h"

#include <ParvelaKit/AppVersion.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Updater.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gtk/gtk.h>

namespace parvela {

/// What the checks for new versions show.
struct UpdateSurfaces {
    /// A main window that people can see, for the dialogs; null when there is none.
    std::function<GtkWindow*()> visibleWindow;
    /// A passing remark in a window.
    std::function<void(const std::string&)> remark;
};

/// Looks for a new version when the program starts and once a day while it runs, and when the user asks. What nobody
/// asked for speaks only when there is something new, and waits for a window to be seen.
class UpdateController : public std::enable_shared_from_this<UpdateController> {
public:
    UpdateController(std::shared_ptr<Updater> updater, AppVersion current, DesktopServices& desktop,
                     UpdateSurfaces surfaces);

    /// Begins the checks that nobody asks for.
    void start();
    /// The user asks. Always ends in an answer.
    void checkNow();
    /// A window has come to the front: shows what waited for one.
    void windowBecameActive();

private:
    enum class Asked { byNobody, byUser };

    static Task<void> check(std::weak_ptr<UpdateController> weak, std::shared_ptr<Updater> updater);
    void begin(Asked asked);
    void finished(const UpdateResult& result);
    void checkIfDue();
    void showWaiting();
    void present(GtkWindow* dialog);
    void chosen(UpdateChoice choice, const appcast::Offer& offer);

    std::shared_ptr<Updater> updater_;
    AppVersion current_;
    DesktopServices& desktop_;
    UpdateSurfaces surfaces_;
    MainLoopTimer daily_;
    /// A check is on its way, and who wants to hear of it.
    std::optional<Asked> checking_;
    /// Says so when an answer takes long.
    MainLoopTimer remark_;
    /// Found while no window could be seen.
    std::optional<appcast::Offer> waiting_;
    /// The dialog on the screen, so that there is one at most.
    GtkWindow* dialog_ = nullptr;
    Connection closed_;
};

}  // namespace parvela
