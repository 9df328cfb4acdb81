#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// One task at a time: its fields, its people and labels, its place in a list, its history.
class TaskStore {
public:
    TaskStore(Database& database, const Clock& clock) : database_(database), clock_(clock) {}

    enum class Deleted { hidden, included };
    /// None also when the task's board is gone. Whether the person may see the board is the caller's question.
    std::optional<TaskRow> find(TaskId id, Deleted deleted = Deleted::hidden);

    struct NewTask {
        BoardId board;
        ListId list;
        std::optional<TaskId> parent;
        std::string title;
        std::string description;
        int priority = 0;
        std::optional<std::string> startDate, dueDate, dueTime;
        std::optional<std::int64_t> estimateMinutes;
        std::optional<PersonId> creator;
    };
    /// The task goes to the end of its list.
    TaskId create(const NewTask& task);

    void setTitle(TaskId id, const std::string& title);
    void setDescription(TaskId id, const std::string& description);
    void setPriority(TaskId id, int priority);
    void setDue(TaskId id, const std::optional<std::string>& date, const std::optional<std::string>& time);
    void setStartDate(TaskId id, const std::optional<std::string>& date);
    void setEstimate(TaskId id, const std::optional<std::int64_t>& minutes);
    void setCompletion(TaskId id, const std::optional<Instant>& moment, const std::optional<ListId>& listBefore);
    void setDeletion(TaskId id, const std::optional<Instant>& moment);
    void addTracked(TaskId id, std::int64_t milliseconds);

    /// Where a task goes in a list. A neighbour that is not in the list any more does not count, so that a move which
    /// lost a race still ends in the right list.
    struct Place {
        ListId list;
        std::optional<TaskId> before;  ///< directly in front of this task
        std::optional<TaskId> after;   ///< else directly behind this one; else at the end
    };
    void place(TaskId id, const Place& place);
    void placeFirst(TaskId id, ListId list);

    std::vector<PersonId> assignees(TaskId id);
    void setAssignees(TaskId id, const std::vector<PersonId>& people);
    std::vector<LabelRow> labels(TaskId id);
    void setLabels(TaskId id, const std::vector<LabelId>& labels);

    struct Reference {
        TaskId id;
        std::string title;
        bool done = false;
    };
    std::optional<Reference> reference(TaskId id);
    std::vector<Reference> subtasks(TaskId id);
    std::vector<Reference> blockedBy(TaskId id);
    void addBlocker(TaskId id, TaskId blocker);

    void addActivity(TaskId id, PersonId who, const std::string& text);
    /// The latest `limit` entries, oldest first.
    std::vector<ActivityEntry> activity(TaskId id, int limit);

    /// Removes for good what was deleted before `moment`: tasks and whole boards.
    void purgeDeletedBefore(Instant moment);

private:
    std::optional<std::int64_t> positionIn(ListId list, std::optional<TaskId> task, TaskId except);
    void renumber(ListId list);

    Database& database_;
    const Clock& clock_;
};

}  // namespace parvela::service
