#pragma once

#include "Automation/KnownTasks.h"

#include <ParvelaKit/ParvelaIntents.h>
#include <ParvelaKit/Url.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace parvela {

/// What automation asks of the rest of the application.
struct AutomationSurfaces {
    /// Shows a page of the web app in the window.
    std::function<void(Url)> openURL;
    /// Tells the user that something was done for which there is no window to show it; a click opens the page.
    std::function<void(const std::string& title, const std::string& body, std::optional<Url> page)> notify;
    /// Tells the user what went wrong, whether there is a window or not.
    std::function<void(const std::string& message, const std::string& informative)> showAlert;
    /// Reads the boards, which makes the first of them the default board where there is none. May be empty.
    std::function<Task<void>()> readBoards;
    /// A task was added or completed.
    std::function<void()> tasksChanged;
    /// A call has ended.
    std::function<void()> wasUsed;
};

/// What the doors of automation lead to. Shared, because calls may outlive the doors.
struct AutomationActions {
    ParvelaIntents intents;
    ParvelaSession session;
    std::shared_ptr<KnownTasks> known;
    AutomationSurfaces surfaces;

    /// These tasks were added or completed by one of the actions.
    void changed(const std::vector<TaskSummary>& tasks) const {
        known->put(tasks);
        surfaces.tasksChanged();
    }

    /// Adds the task; an application that has never read its boards does so first.
    static ParvelaIntents::Outcome add(std::shared_ptr<const AutomationActions> self, AddTaskIntent intent) {
        if (!intent.board && !self->session.prefs().defaultBoardID() && self->surfaces.readBoards) {
            auto reading = self->surfaces.readBoards();
            co_await reading;
        }
        auto adding = self->intents.perform(std::move(intent));
        auto result = co_await adding;
        co_return result;
    }
};

}  // namespace parvela
