#pragma once

#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// The application's windows program: the one that runs in this session, or a new one.
struct RunningProgram {
    /// Hands URLs to the program that runs, or that the bus starts for them. False when there is none, or it does not
    /// answer.
    static bool open(const std::vector<std::string>& urls);
    /// Lets it show the quick-add field (its action "showQuickAdd"), likewise.
    static bool showQuickAdd();
    /// Asks the program that runs, if any, to read its settings and token again (its action "reload-settings").
    static void tellSettingsChanged();
    /// Tells it that a line was kept for it to send (its action "send-waiting-lines").
    static void tellLinesWait();
    /// Tells it that a task was added or completed (its action "tasks-changed").
    static void tellTasksChanged();
    /// Activates one of the entries of launchers, in a program that the bus starts when none runs. The reason in one
    /// sentence when that fails.
    static std::optional<std::string> act(const std::string& action);
    /// What would keep become() from showing a window, as far as that can be told beforehand.
    static std::optional<std::string> obstacle();
    /// Becomes the program, for where the bus can't start it. Returns only when that fails, with the reason.
    static std::string become(const std::vector<std::string>& arguments);
};

/// A program that is installed, or was built, beside this one.
std::string siblingProgram(const std::string& name);

}  // namespace parvela
