#pragma once

#include "Domain/Changes.h"
#include "Domain/Resolver.h"
#include "Domain/Stores.h"

#include <ParvelaKit/Records/Patch.h>
#include <ParvelaKit/Result.h>

#include <optional>
#include <string>
#include <vector>

namespace parvela::service {

/// What people do to tasks: each action is one transaction that also writes the task's history and the inboxes, and is
/// announced when it is stored. The caller has checked that the person may see the task.
class TaskActions {
public:
    TaskActions(Stores& stores, ChangeFeed& changes, const Clock& clock)
        : stores_(stores), changes_(changes), clock_(clock) {}

    struct NewTask {
        std::optional<ListId> list;  ///< of the board; none for its first list
        std::optional<TaskId> parent;
        std::string title;
        std::string description;
        std::vector<std::string> assignees;  ///< ids or names
        std::vector<std::string> labels;     ///< ids or names
        std::optional<std::string> dueDate, dueTime, startDate;
        int priority = 0;
    };
    Result<TaskId, UnresolvedReference> create(const Account& actor, const BoardRow& board, const NewTask& task);

    struct Edit {
        std::optional<std::string> title;
        std::optional<std::string> description;
        std::optional<int> priority;
        Patch<std::string> dueDate, dueTime, startDate;
        Patch<std::int64_t> estimateMinutes;
        std::optional<std::vector<std::string>> assignees, labels;  ///< ids or names
        std::optional<ListId> list;                                 ///< of the task's board
        std::optional<bool> done;
    };
    Result<void, UnresolvedReference> edit(const Account& actor, const TaskRow& task, const Edit& edit);

    void move(const Account& actor, const TaskRow& task, const TaskStore::Place& place);
    void remove(const Account& actor, const TaskRow& task);
    void restore(const Account& actor, const TaskRow& task);

    CommentId comment(const Account& actor, const TaskRow& task, const std::string& body);
    void startTimer(const Account& actor, const TaskRow& task);
    /// Adds the running time to the task. Nothing happens when the person's timer runs on another task or not at all.
    void stopTimer(const Account& actor, const TaskRow& task);

    /// Announces a change of a task's checklists, files or comments.
    void touched(const TaskRow& task);

private:
    Result<std::vector<PersonId>, UnresolvedReference> resolveAssignees(const std::vector<std::string>& names,
                                                                        const BoardRow& board);
    Result<std::vector<LabelId>, UnresolvedReference> resolveLabels(const std::vector<std::string>& names,
                                                                    const BoardRow& board);
    /// Collects what one action does, so that it is announced once.
    struct Effects {
        std::vector<PersonId> inboxes;
        std::optional<PersonId> timer;
    };
    void notify(Effects& effects, const Account& actor, PersonId recipient, const char* kind, const std::string& text,
                TaskId task);
    void notifyAssigned(Effects& effects, const Account& actor, const std::vector<PersonId>& people, TaskId task,
                        const std::string& title);
    void setDone(Effects& effects, const Account& actor, const TaskRow& task, const BoardRow& board, bool done);
    void moveToList(Effects& effects, const Account& actor, const TaskRow& task, const BoardRow& board,
                    const TaskStore::Place& place);
    void complete(Effects& effects, const Account& actor, const TaskRow& task);
    void reopen(const Account& actor, const TaskRow& task);
    void finishTimer(const TimerRow& timer);
    BoardRow boardOf(const TaskRow& task, const Account& viewer);

    Stores& stores_;
    ChangeFeed& changes_;
    const Clock& clock_;
};

}  // namespace parvela::service
