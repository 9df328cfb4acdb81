#include "Store/TaskStore.h"

#include <algorithm>

namespace parvela::service {

namespace {

/// Distance between neighbours of a freshly numbered list: twenty moves to one spot fit before it is numbered again.
constexpr std::int64_t gap = std::int64_t{1} << 20;

constexpr std::string_view selectTask =
    "SELECT t.id, t.board_id, t.list_id, b.name, l.name, t.list_before_done, t.parent_id, t.title, t.description, "
    "t.priority, t.start_date, t.due_date, t.due_time, t.position, t.estimate_minutes, t.tracked_ms, t.created_at, "
    "t.created_by, t.completed_at, t.deleted_at "
    "FROM tasks t JOIN boards b ON b.id = t.board_id JOIN lists l ON l.id = t.list_id "
    "WHERE t.id = ? AND b.deleted_at IS NULL";

TaskRow readTask(const Statement& row) {
    return {.id = row.id<TaskId>(0),
            .board = row.id<BoardId>(1),
            .list = row.id<ListId>(2),
            .boardName = row.text(3),
            .listName = row.text(4),
            .listBeforeDone = row.optionalId<ListId>(5),
            .parent = row.optionalId<TaskId>(6),
            .title = row.text(7),
            .description = row.text(8),
            .priority = static_cast<int>(row.integer(9)),
            .startDate = row.optionalText(10),
            .dueDate = row.optionalText(11),
            .dueTime = row.optionalText(12),
            .position = row.integer(13),
            .estimateMinutes = row.optionalInteger(14),
            .trackedMilliseconds = row.integer(15),
            .createdAt = row.instant(16),
            .createdBy = row.optionalId<PersonId>(17),
            .completedAt = row.optionalInstant(18),
            .deletedAt = row.optionalInstant(19)};
}

std::vector<TaskStore::Reference> readReferences(Statement rows) {
    std::vector<TaskStore::Reference> references;
    while (rows.step()) references.push_back({rows.id<TaskId>(0), rows.text(1), rows.flag(2)});
    return references;
}

}  // namespace

std::optional<TaskRow> TaskStore::find(TaskId id, Deleted deleted) {
    auto row = database_.query(selectTask, id);
    if (!row.step()) return {};
    TaskRow task = readTask(row);
    if (task.deletedAt && deleted == Deleted::hidden) return {};
    return task;
}

TaskId TaskStore::create(const NewTask& task) {
    database_.run(
        "INSERT INTO tasks(board_id, list_id, parent_id, title, description, priority, start_date, due_date, due_time, "
        "estimate_minutes, created_at, created_by, position) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, "
        "?12, "
        "(SELECT ifnull(max(position), 0) + ?13 FROM tasks WHERE list_id = ?2))",
        task.board, task.list, task.parent, task.title, task.description, task.priority, task.startDate, task.dueDate,
        task.dueTime, task.estimateMinutes, clock_.now(), task.creator, gap);
    return TaskId{database_.lastInsertedRow()};
}

void TaskStore::setTitle(TaskId id, const std::string& title) {
    database_.run("UPDATE tasks SET title = ? WHERE id = ?", title, id);
}

void TaskStore::setDescription(TaskId id, const std::string& description) {
    database_.run("UPDATE tasks SET description = ? WHERE id = ?", description, id);
}

void TaskStore::setPriority(TaskId id, int priority) {
    database_.run("UPDATE tasks SET priority = ? WHERE id = ?", priority, id);
}

void TaskStore::setDue(TaskId id, const std::optional<std::string>& date, const std::optional<std::string>& time) {
    database_.run("UPDATE tasks SET due_date = ?, due_time = ? WHERE id = ?", date, time, id);
}

void TaskStore::setStartDate(TaskId id, const std::optional<std::string>& date) {
    database_.run("UPDATE tasks SET start_date = ? WHERE id = ?", date, id);
}

void TaskStore::setEstimate(TaskId id, const std::optional<std::int64_t>& minutes) {
    database_.run("UPDATE tasks SET estimate_minutes = ? WHERE id = ?", minutes, id);
}

void TaskStore::setCompletion(TaskId id, const std::optional<Instant>& moment,
                              const std::optional<ListId>& listBefore) {
    database_.run("UPDATE tasks SET completed_at = ?, list_before_done = ? WHERE id = ?", moment, listBefore, id);
}

void TaskStore::setDeletion(TaskId id, const std::optional<Instant>& moment) {
    database_.run("UPDATE tasks SET deleted_at = ? WHERE id = ?", moment, id);
}

void TaskStore::addTracked(TaskId id, std::int64_t milliseconds) {
    database_.run("UPDATE tasks SET tracked_ms = tracked_ms + ? WHERE id = ?", milliseconds, id);
}

std::optional<std::int64_t> TaskStore::positionIn(ListId list, std::optional<TaskId> task, TaskId except) {
    if (!task || *task == except) return {};
    auto row =
        database_.query("SELECT position FROM tasks WHERE id = ? AND list_id = ? AND deleted_at IS NULL", *task, list);
    if (!row.step()) return {};
    return row.integer(0);
}

void TaskStore::renumber(ListId list) {
    std::vector<TaskId> order;
    {
        auto rows = database_.query("SELECT id FROM tasks WHERE list_id = ? ORDER BY position, id", list);
        while (rows.step()) order.push_back(rows.id<TaskId>(0));
    }
    std::int64_t position = 0;
    for (const TaskId id : order) {
        position += gap;
        database_.run("UPDATE tasks SET position = ? WHERE id = ?", position, id);
    }
}

void TaskStore::place(TaskId id, const Place& place) {
    Transaction transaction(database_);
    // A second round happens only after the list was numbered afresh, and then there is room.
    for (int round = 0; round < 2; ++round) {
        std::optional<std::int64_t> high = positionIn(place.list, place.before, id);
        std::optional<std::int64_t> low = high ? std::nullopt : positionIn(place.list, place.after, id);
        if (high) {
            auto row = database_.query("SELECT max(position) FROM tasks WHERE list_id = ? AND position < ? AND id <> ?",
                                       place.list, *high, id);
            if (row.step()) low = row.optionalInteger(0);
        } else if (low) {
            auto row = database_.query("SELECT min(position) FROM tasks WHERE list_id = ? AND position > ? AND id <> ?",
                                       place.list, *low, id);
            if (row.step()) high = row.optionalInteger(0);
        } else {
            auto row = database_.query("SELECT max(position) FROM tasks WHERE list_id = ? AND id <> ?", place.list, id);
            if (row.step()) low = row.optionalInteger(0);
        }
        const std::int64_t position = low && high ? *low + (*high - *low) / 2
                                      : high      ? *high - gap
                                                  : low.value_or(0) + gap;
        if (low && high && (position == *low || position == *high)) {
            renumber(place.list);
            continue;
        }
        database_.run("UPDATE tasks SET list_id = ?, position = ? WHERE id = ?", place.list, position, id);
        break;
    }
    transaction.commit();
}

void TaskStore::placeFirst(TaskId id, ListId list) {
    std::int64_t position = gap;
    {
        auto row = database_.query("SELECT min(position) FROM tasks WHERE list_id = ? AND id <> ?", list, id);
        if (row.step() && !row.isNull(0)) position = row.integer(0) - gap;
    }
    database_.run("UPDATE tasks SET list_id = ?, position = ? WHERE id = ?", list, position, id);
}

std::vector<PersonId> TaskStore::assignees(TaskId id) {
    std::vector<PersonId> people;
    auto rows = database_.query("SELECT account_id FROM task_assignees WHERE task_id = ? ORDER BY account_id", id);
    while (rows.step()) people.push_back(rows.id<PersonId>(0));
    return people;
}

void TaskStore::setAssignees(TaskId id, const std::vector<PersonId>& people) {
    Transaction transaction(database_);
    database_.run("DELETE FROM task_assignees WHERE task_id = ?", id);
    for (const PersonId person : people) {
        database_.run("INSERT OR IGNORE INTO task_assignees(task_id, account_id) VALUES (?, ?)", id, person);
    }
    transaction.commit();
}

std::vector<LabelRow> TaskStore::labels(TaskId id) {
    std::vector<LabelRow> labels;
    auto rows = database_.query(
        "SELECT l.id, l.board_id, l.name, l.tone FROM task_labels t JOIN labels l ON l.id = t.label_id "
        "WHERE t.task_id = ? ORDER BY l.id",
        id);
    while (rows.step()) {
        labels.push_back({rows.id<LabelId>(0), rows.id<BoardId>(1), rows.text(2), rows.text(3)});
    }
    return labels;
}

void TaskStore::setLabels(TaskId id, const std::vector<LabelId>& labels) {
    Transaction transaction(database_);
    database_.run("DELETE FROM task_labels WHERE task_id = ?", id);
    for (const LabelId label : labels) {
        database_.run("INSERT OR IGNORE INTO task_labels(task_id, label_id) VALUES (?, ?)", id, label);
    }
    transaction.commit();
}

std::optional<TaskStore::Reference> TaskStore::reference(TaskId id) {
    auto row = database_.query(
        "SELECT id, title, completed_at IS NOT NULL FROM tasks WHERE id = ? AND deleted_at IS NULL", id);
    if (!row.step()) return {};
    return Reference{row.id<TaskId>(0), row.text(1), row.flag(2)};
}

std::vector<TaskStore::Reference> TaskStore::subtasks(TaskId id) {
    return readReferences(database_.query(
        "SELECT id, title, completed_at IS NOT NULL FROM tasks WHERE parent_id = ? AND deleted_at IS NULL ORDER BY id",
        id));
}

std::vector<TaskStore::Reference> TaskStore::blockedBy(TaskId id) {
    return readReferences(database_.query(
        "SELECT t.id, t.title, t.completed_at IS NOT NULL FROM task_blockers k JOIN tasks t ON t.id = k.blocker_id "
        "WHERE k.task_id = ? AND t.deleted_at IS NULL ORDER BY t.id",
        id));
}

void TaskStore::addBlocker(TaskId id, TaskId blocker) {
    database_.run("INSERT OR IGNORE INTO task_blockers(task_id, blocker_id) VALUES (?, ?)", id, blocker);
}

void TaskStore::addActivity(TaskId id, PersonId who, const std::string& text) {
    database_.run("INSERT INTO activity(task_id, account_id, text, at) VALUES (?, ?, ?, ?)", id, who, text,
                  clock_.now());
}

std::vector<ActivityEntry> TaskStore::activity(TaskId id, int limit) {
    std::vector<ActivityEntry> entries;
    auto rows = database_.query(
        "SELECT ifnull(a.name, 'Someone'), e.text, e.at FROM activity e LEFT JOIN accounts a ON a.id = e.account_id "
        "WHERE e.task_id = ? ORDER BY e.id DESC LIMIT ?",
        id, limit);
    while (rows.step()) entries.push_back({rows.text(0), rows.text(1), rows.instant(2)});
    std::ranges::reverse(entries);
    return entries;
}

void TaskStore::purgeDeletedBefore(Instant moment) {
    Transaction transaction(database_);
    database_.run("DELETE FROM tasks WHERE deleted_at IS NOT NULL AND deleted_at < ?", moment);
    // Tasks first: a list that still holds tasks cannot go.
    database_.run(
        "DELETE FROM tasks WHERE board_id IN (SELECT id FROM boards WHERE deleted_at IS NOT NULL AND deleted_at < ?)",
        moment);
    database_.run("DELETE FROM boards WHERE deleted_at IS NOT NULL AND deleted_at < ?", moment);
    transaction.commit();
}

}  // namespace parvela::service
