#pragma once

#include "Automation/AutomationActions.h"
#include "Automation/Invocation.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// One thing that desktop search offers.
struct Finding {
    enum class Kind { task, board, add };

    Kind kind = Kind::task;
    std::string id;  ///< for activate(); also after the search that gave it
    std::string title;
    std::string detail;
    bool isExact = false;  ///< most likely what was looked for

    bool operator==(const Finding&) const = default;
};

/// What the searches of desktops find in Parvela: tasks and boards to open, and the phrase itself as a task to add.
///
/// The phrase is offered when it has at least two words, or begins with "add", "new task" or "quick add", which then
/// are no part of it. Nothing is offered when Parvela is not linked.
class DesktopSearch {
public:
    static constexpr std::size_t mostTasks = 8;
    static constexpr std::size_t mostBoards = 3;

    /// What is known now.
    static std::vector<Finding> find(const AutomationActions& actions, std::string_view phrase);
    /// The finding of an id that find() gave; none when it is no longer known.
    static std::optional<Finding> describe(const AutomationActions& actions, const std::string& id);
    /// Opens it, or adds it, and holds the ticket until that is done. Ids come from other programs; what makes no sense
    /// is ignored.
    static void activate(const std::shared_ptr<AutomationActions>& actions, const std::string& id,
                         CallGate::Ticket ticket);
    /// Shows the web app's own search.
    static void open(const AutomationActions& actions, std::string_view phrase);
};

}  // namespace parvela
