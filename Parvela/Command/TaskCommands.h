#pragma once

#include "CommandSession.h"
#include "Console.h"
#include "ExitStatus.h"

#include <optional>
#include <string>

namespace parvela {

enum class OutputForm { text, json };

struct AddOptions {
    std::string line;
    std::optional<std::string> board;  ///< id or name
    std::optional<std::string> due;    ///< "YYYY-MM-DD", or date words of quick add
    std::optional<std::string> priority;
    OutputForm form = OutputForm::text;
};

/// Turns a line of quick add into a task. A line that cannot be sent now waits in the offline queue.
ExitStatus addTask(const AddOptions& options, const CommandSession& session, const Console& console);
/// The open tasks due today, overdue ones included.
ExitStatus showDueTasks(OutputForm form, const CommandSession& session, const Console& console);
ExitStatus showBoards(OutputForm form, const CommandSession& session, const Console& console);
ExitStatus completeTask(const std::string& key, const CommandSession& session, const Console& console);

}  // namespace parvela
