#pragma once

#include "Model/AppModel.h"
#include "QuickAdd/DueList.h"
#include "QuickAdd/PopoverWindow.h"
#include "QuickAdd/QueueSection.h"
#include "QuickAdd/QuickAddForm.h"
#include "Support/Interface.h"
#include "Support/WaitingLines.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// What the popover asks of the rest of the application.
struct QuickAddPopoverActions {
    std::function<void()> openMainWindow;
    std::function<void()> showSettings;
    std::function<void()> stopTimer;
    /// Shows the main window and lets its page offer to link this device.
    std::function<void()> requestLink;
    /// Loads the task's page in the main window.
    std::function<void(const TaskSummary&)> openTask;
    std::function<void()> quit;
    /// Sends the lines, or keeps them.
    std::shared_ptr<WaitingLines> waitingLines;
};

/// The small window of quick add and what is due today. Made once and kept ready, so that it opens at once; what is
/// typed stays in it until it was added, also across launches.
///
/// It never raises the main windows. It closes by Escape, and when the user goes to another window; the window that had
/// the keyboard gets it back unless the user went elsewhere.
class QuickAddPopover {
public:
    QuickAddPopover(GtkApplication* application, std::shared_ptr<AppModel> model, QuickAddPopoverActions actions);
    QuickAddPopover(const QuickAddPopover&) = delete;
    QuickAddPopover& operator=(const QuickAddPopover&) = delete;
    ~QuickAddPopover();

    /// Shows it beside the anchor, else where it was anchored last, else in the middle of the screen; puts the keyboard
    /// into the field and reads boards and due tasks again. `activationToken` is what the desktop gave with the user's
    /// wish, if anything.
    void show(std::optional<PopoverAnchor> anchor, const std::optional<std::string>& activationToken);
    /// Gives the keyboard back.
    void hide();
    bool isShown() const;
    void focusField();

    /// Told after it went because the user went elsewhere.
    std::function<void()> onDismissed;

private:
    /// Goes away because another window of ours is about to come.
    void leave();
    void connectButtons();
    void observeModel();
    bool takesLines() const;
    void showLink();
    void showSubtitle();
    void showLoading();
    void showTimer();
    void closed();

    std::shared_ptr<AppModel> model_;
    QuickAddPopoverActions actions_;
    Interface interface_;
    PopoverWindow window_;
    std::shared_ptr<QuickAddForm> form_;
    DueList due_;
    QueueSection queue_;
    GtkWidget* content_;
    GtkWidget* linkPrompt_;
    std::vector<Connection> connections_;
    MainLoopTimer refresh_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
