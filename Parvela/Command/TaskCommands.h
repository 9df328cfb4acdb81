#pragma once

#include "CommandSession.h"
#include "Console.h"
#include "ExitStatus.h"

#include <ParvelaKit/ParvelaIntents.h>

#include <string>

namespace parvela {

/// Turns a line of quick add into a task. A line that cannot be sent now waits in the offline queue.
ExitStatus addTask(AddTaskWords words, OutputForm form, const CommandSession& session, const Console& console);
/// The open tasks due today, overdue ones included.
ExitStatus showDueTasks(OutputForm form, const CommandSession& session, const Console& console);
ExitStatus showBoards(OutputForm form, const CommandSession& session, const Console& console);
/// Shows the task's page in the window of the program that runs or that the bus starts, or else of a new one, which
/// takes this one's place.
ExitStatus openTask(const std::string& key, OutputForm form, const CommandSession& session, const Console& console);
ExitStatus completeTask(const std::string& key, OutputForm form, const CommandSession& session, const Console& console);

}  // namespace parvela
