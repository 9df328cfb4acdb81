#pragma once

#include "Automation/AutomationActions.h"

#include <ParvelaKit/GLibPtr.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// The actions of automation as the entries of a launcher: "add-task", "due-today", "open-task" and "complete-task" of
/// the application. What a launcher cannot say is asked for in a small dialog.
class LauncherActions {
public:
    /// `parent` is the window in front, or null.
    LauncherActions(GApplication* application, std::shared_ptr<AutomationActions> actions,
                    std::function<void()> showQuickAdd, std::function<GtkWindow*()> parent);

private:
    void define(GApplication* application, const char* name, std::function<void()> handler);
    void askForKey(const IntentDescription& intent, std::function<void(std::string)> then);

    std::shared_ptr<AutomationActions> actions_;
    std::function<GtkWindow*()> parent_;
    std::vector<Connection> connections_;

    /// A dialog that asks for a key, as long as it is there.
    struct Question {
        GtkWidget* dialog = nullptr;
        std::vector<Connection> connections;
    };
    std::map<std::string, Question> questions_;  ///< by the title of the intent
};

}  // namespace parvela
