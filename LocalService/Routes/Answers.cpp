#include "Routes/Answers.h"

#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/Url.h>

namespace parvela::service {

namespace {

constexpr int shownActivity = 100;
/// The days of "this week", today included.
constexpr int weekDays = 7;

TaskDetail::File fileRecord(const FileRow& file) {
    return {.id = file.id.text(),
            .name = file.name,
            .mime = file.mime,
            .size = static_cast<double>(file.size),
            .url = "/files/" + file.id.text() + "/" + percentEncode(file.name, UrlCharacters::pathSegment)};
}

std::string priorityText(int priority) {
    return std::string(priorities.at(static_cast<std::size_t>(priority)));
}

template <class Ref>
std::vector<std::string> namesOf(const std::vector<Ref>& entries) {
    std::vector<std::string> names;
    for (const auto& entry : entries) names.push_back(entry.name);
    return names;
}

}  // namespace

double milliseconds(Instant moment) {
    return static_cast<double>(moment.time_since_epoch().count());
}

nlohmann::json fileAnswer(const FileRow& file) {
    return json::toJson(fileRecord(file));
}

Person Answers::person(const Account& account) {
    return {.id = account.id.text(),
            .name = account.name,
            .color = account.color,
            .avatar = std::nullopt,
            .role = account.role,
            .email = account.email};
}

std::vector<Person> Answers::people(const std::vector<Account>& accounts) {
    std::vector<Person> people;
    for (const Account& account : accounts) people.push_back(person(account));
    return people;
}

LabelTag Answers::tag(const LabelRow& label) {
    return {.id = label.id.text(), .name = label.name, .tone = label.tone};
}

Me Answers::me() {
    const auto workspace = stores_.accounts.workspace();
    Me me{.id = viewer_.id.text(), .name = viewer_.name, .email = viewer_.email, .workspace = std::nullopt};
    if (workspace) me.workspace = Me::Workspace{workspace->id.text(), workspace->name};
    return me;
}

PeopleResponse Answers::everybody() {
    return {people(stores_.accounts.people())};
}

std::vector<Person> Answers::audience(BoardId board) {
    std::vector<Person> result;
    for (const PersonId id : stores_.boards.audience(board)) {
        if (const auto account = stores_.accounts.find(id)) result.push_back(person(*account));
    }
    return result;
}

BoardsResponse Answers::boards() {
    BoardsResponse response;
    if (const auto workspace = stores_.accounts.workspace()) {
        response.workspace = {workspace->id.text(), workspace->name};
        response.workspaces.push_back({workspace->id.text(), workspace->name, viewer_.role});
    }
    for (const BoardRow& row : stores_.boards.visibleTo(viewer_.id)) {
        parvela::Board board{
            .id = row.id.text(), .name = row.name, .isPrivate = row.isPrivate, .lists = {}, .colorHex = row.color};
        for (const ListRow& list : stores_.boards.lists(row.id)) board.lists.push_back({list.id.text(), list.name});
        response.boards.push_back(std::move(board));
    }
    return response;
}

BoardDetail Answers::board(const BoardRow& row) {
    const auto counts = stores_.boards.counts(row.id, today_.text());
    BoardDetail detail{.id = row.id.text(),
                       .name = row.name,
                       .description = row.description,
                       .icon = row.icon,
                       .isPrivate = row.isPrivate,
                       .people = audience(row.id),
                       .open = counts.open,
                       .done = counts.done,
                       .overdue = counts.overdue,
                       .url = "/b/" + row.id.text()};
    if (row.completionList) detail.completionListId = row.completionList->text();
    for (const ListRow& list : stores_.boards.lists(row.id)) {
        detail.lists.push_back({list.id.text(), list.name, list.open, list.total});
    }
    for (const LabelRow& label : stores_.boards.labels(row.id)) detail.labels.push_back(tag(label));
    return detail;
}

BoardSummary Answers::summary(const BoardRow& row) {
    const auto counts = stores_.boards.counts(row.id, today_.text());
    BoardSummary summary{
        .board = row.name,
        .boardId = row.id.text(),
        .open = counts.open,
        .done = counts.done,
        .overdue = counts.overdue,
        .dueThisWeek = stores_.boards.openDueBetween(row.id, today_.text(), today_.addingDays(weekDays - 1).text())};
    for (const ListRow& list : stores_.boards.lists(row.id)) {
        summary.lists.push_back({list.id.text(), list.name, list.open, list.total});
    }
    return summary;
}

HomeData::BoardGlance Answers::glance(const BoardRow& row) {
    const auto counts = stores_.boards.counts(row.id, today_.text());
    return {.id = row.id.text(),
            .name = row.name,
            .icon = row.icon,
            .isPrivate = row.isPrivate,
            .starred = row.starred,
            .open = counts.open,
            .done = counts.done,
            .overdue = counts.overdue};
}

std::vector<Person> Answers::assignees(TaskId id) {
    std::vector<Person> result;
    for (const PersonId personId : stores_.tasks.assignees(id)) {
        if (const auto account = stores_.accounts.find(personId)) result.push_back(person(*account));
    }
    return result;
}

TaskSummary Answers::task(const TaskRow& row) {
    TaskSummary summary{.id = row.id.text(),
                        .key = taskKey(row.id),
                        .title = row.title,
                        .board = row.boardName,
                        .boardId = row.board.text(),
                        .list = row.listName,
                        .listId = row.list.text(),
                        .assignees = namesOf(assignees(row.id)),
                        .priority = priorityText(row.priority),
                        .dueDate = row.dueDate,
                        .dueTime = row.dueTime,
                        .done = row.done(),
                        .url = "/t/" + taskKey(row.id),
                        .labelTags = std::vector<LabelTag>()};
    if (!row.description.empty()) summary.description = row.description;
    for (const LabelRow& label : stores_.tasks.labels(row.id)) summary.labelTags->push_back(tag(label));
    summary.labels = namesOf(*summary.labelTags);
    return summary;
}

std::vector<TaskSummary> Answers::tasks(const std::vector<TaskId>& ids) {
    std::vector<TaskSummary> summaries;
    for (const TaskId id : ids) {
        if (const auto row = stores_.tasks.find(id)) summaries.push_back(task(*row));
    }
    return summaries;
}

nlohmann::json Answers::card(const TaskRow& row) {
    nlohmann::json card = json::toJson(task(row));
    card["position"] = row.position;
    card["comments"] = stores_.comments.count(row.id);
    card["files"] = stores_.files.count(row.id);
    const auto progress = stores_.checklists.progress(row.id);
    card["checklist"] = {{"done", progress.done}, {"total", progress.total}};
    card["assignee_people"] = json::detail::listToJson(assignees(row.id));
    card["created_at"] = milliseconds(row.createdAt);
    if (row.startDate) card["start_date"] = *row.startDate;
    if (row.completedAt) card["completed_at"] = milliseconds(*row.completedAt);
    return card;
}

nlohmann::json Answers::cards(const std::vector<TaskId>& ids) {
    auto cards = nlohmann::json::array();
    for (const TaskId id : ids) {
        if (const auto row = stores_.tasks.find(id)) cards.push_back(card(*row));
    }
    return cards;
}

TaskDetail::Ref Answers::reference(const TaskStore::Reference& row) {
    return {.id = row.id.text(), .key = taskKey(row.id), .title = row.title, .done = row.done};
}

TaskDetail Answers::detail(const TaskRow& row, bool canEdit) {
    TaskSummary summary = task(row);
    TaskDetail detail{.id = std::move(summary.id),
                      .key = std::move(summary.key),
                      .title = std::move(summary.title),
                      .board = std::move(summary.board),
                      .boardId = std::move(summary.boardId),
                      .list = std::move(summary.list),
                      .listId = std::move(summary.listId),
                      .assignees = std::move(summary.assignees),
                      .priority = std::move(summary.priority),
                      .labels = std::move(summary.labels),
                      .dueDate = row.dueDate,
                      .dueTime = row.dueTime,
                      .done = row.done(),
                      .url = std::move(summary.url),
                      .description = row.description,
                      .startDate = row.startDate,
                      .createdAt = milliseconds(row.createdAt),
                      .people = assignees(row.id),
                      .labelTags = std::move(*summary.labelTags),
                      .trackedMinutes = static_cast<double>(row.trackedMilliseconds) / 60000.0,
                      .canEdit = canEdit};
    if (row.createdBy) {
        if (const auto creator = stores_.accounts.find(*row.createdBy)) detail.createdBy = creator->name;
    }
    if (row.estimateMinutes) detail.estimateMinutes = static_cast<double>(*row.estimateMinutes);
    if (row.parent) {
        if (const auto parent = stores_.tasks.reference(*row.parent)) detail.parent = reference(*parent);
    }
    for (const ChecklistRow& checklist : stores_.checklists.ofTask(row.id)) {
        TaskDetail::Checklist record{.id = checklist.id.text(), .title = checklist.title, .items = {}};
        for (const ChecklistItem& item : checklist.items)
            record.items.push_back({item.id.text(), item.text, item.done});
        detail.checklists.push_back(std::move(record));
    }
    for (const auto& subtask : stores_.tasks.subtasks(row.id)) detail.subtasks.push_back(reference(subtask));
    for (const auto& blocker : stores_.tasks.blockedBy(row.id)) detail.blockedBy.push_back(reference(blocker));
    if (const auto timer = stores_.timers.onTask(row.id, viewer_.id)) {
        detail.timer = TaskDetail::Timer{timer->person.text(), milliseconds(timer->startedAt)};
    }
    for (const FileRow& file : stores_.files.ofTask(row.id)) detail.files.push_back(fileRecord(file));
    for (const CommentRow& comment : stores_.comments.ofTask(row.id)) {
        const auto author = stores_.accounts.find(comment.author);
        if (!author) continue;
        detail.comments.push_back({.id = comment.id.text(),
                                   .author = person(*author),
                                   .body = comment.body,
                                   .at = milliseconds(comment.at),
                                   .edited = comment.edited,
                                   .mine = comment.author == viewer_.id});
    }
    for (const ActivityEntry& entry : stores_.tasks.activity(row.id, shownActivity)) {
        detail.activity.push_back({entry.who, entry.text, milliseconds(entry.at)});
    }
    return detail;
}

NotificationItem Answers::notification(const NotificationRow& row) {
    NotificationItem item{
        .id = row.id.text(), .kind = row.kind, .text = row.text, .at = milliseconds(row.at), .read = row.read};
    if (row.actor) {
        if (const auto actor = stores_.accounts.find(*row.actor)) item.actor = person(*actor);
    }
    if (row.task) {
        const auto task = stores_.tasks.find(*row.task);
        if (task && stores_.boards.canSee(task->board, viewer_.id)) {
            item.task = NotificationItem::TaskRef{.id = task->id.text(),
                                                  .key = taskKey(task->id),
                                                  .title = task->title,
                                                  .boardId = task->board.text(),
                                                  .board = task->boardName,
                                                  .done = task->done()};
        }
    }
    return item;
}

}  // namespace parvela::service
