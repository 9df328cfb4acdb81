#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// Which tasks a list shows, in which order. Every query walks an index from where the answer begins and stops where it
/// ends, so its cost grows with the answer and the number of boards, not with the number of tasks.
class TaskQueries {
public:
    explicit TaskQueries(Database& database) : database_(database) {}

    /// Who asks, and what narrows the answer.
    struct Scope {
        PersonId viewer;
        bool mine = false;             ///< only what is assigned to the viewer
        std::optional<BoardId> board;  ///< only one board
    };

    /// Due dates from `first` (date text, inclusive) up to but not including `end`; absent is open-ended.
    struct DueRange {
        std::optional<std::string> first, end;
    };

    /// Open tasks by due date and time, tasks without a date last, then by key.
    std::vector<TaskId> open(const Scope& scope, const DueRange& due, int limit);
    /// Tasks completed at `since` or later, latest first.
    std::vector<TaskId> completedSince(const Scope& scope, Instant since, const DueRange& due, int limit);
    /// Completed tasks by due date.
    std::vector<TaskId> completedDue(const Scope& scope, const DueRange& due, int limit);

    /// How many open tasks are assigned to the viewer in that range.
    std::int64_t countMine(PersonId viewer, const DueRange& due);
    std::int64_t countMineCompletedSince(PersonId viewer, Instant since);

    /// Tasks whose title or description has all the words, the last one possibly unfinished. Open ones first, then
    /// newest.
    std::vector<TaskId> search(PersonId viewer, std::string_view text, int limit);

    /// The SQL behind the lists, for looking at its query plan.
    static std::vector<std::string> statements();

private:
    Database& database_;
};

}  // namespace parvela::service
