#pragma once

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/Records/Tasks.h>

#include <string>
#include <vector>

namespace parvela {

/// What the daily notification says about the tasks due today; lines of the body are joined by line feeds.
struct DailySummary {
    std::string title;
    std::string body;

    bool operator==(const DailySummary&) const = default;

    /// Counts only open tasks, and as overdue those due before `today`.
    static DailySummary of(const std::vector<TaskSummary>& dueToday, CivilDate today);
};

}  // namespace parvela
