#include "Domain/TaskActions.h"

#include "Domain/Contains.h"

#include <ParvelaKit/Text.h>

#include <algorithm>

#include <fmt/format.h>
#include <glib.h>

namespace parvela::service {

namespace {

constexpr const char* assignedKind = "assigned";
constexpr const char* commentKind = "comment";
constexpr const char* mentionKind = "mention";
constexpr const char* doneKind = "done";

/// "@Name" anywhere in the text, for a person's whole name, first name or name without blanks.
bool mentions(std::string_view body, const Account& person) {
    const std::string text = lowercased(body);
    const std::string name = lowercased(person.name);
    const std::string first = name.substr(0, name.find(' '));
    for (const std::string& handle : {name, first}) {
        for (auto at = text.find("@" + handle); at != std::string::npos; at = text.find("@" + handle, at + 1)) {
            const auto end = at + 1 + handle.size();
            const bool wordGoesOn =
                end < text.size() && (g_ascii_isalnum(text[end]) || static_cast<unsigned char>(text[end]) >= 0x80);
            if (!handle.empty() && !wordGoesOn) return true;
        }
    }
    return false;
}

}  // namespace

Result<std::vector<PersonId>, UnresolvedReference> TaskActions::resolveAssignees(const std::vector<std::string>& names,
                                                                                 const BoardRow& board) {
    const auto people = stores_.accounts.people();
    std::vector<PersonId> resolved;
    for (const std::string& name : names) {
        const auto person = resolvePerson(name, people);
        if (!person) return Failure(person.error());
        if (!stores_.boards.canSee(board.id, *person)) {
            return Failure(UnresolvedReference::cannotSee(stores_.accounts.find(*person)->name, board.name));
        }
        if (!contains(resolved, *person)) resolved.push_back(*person);
    }
    return resolved;
}

Result<std::vector<LabelId>, UnresolvedReference> TaskActions::resolveLabels(const std::vector<std::string>& names,
                                                                             const BoardRow& board) {
    const auto labels = stores_.boards.labels(board.id);
    std::vector<LabelId> resolved;
    for (const std::string& name : names) {
        const auto label = resolveLabel(name, board, labels);
        if (!label) return Failure(label.error());
        if (!contains(resolved, *label)) resolved.push_back(*label);
    }
    return resolved;
}

Result<TaskId, UnresolvedReference> TaskActions::create(const Account& actor, const BoardRow& board,
                                                        const NewTask& task) {
    const auto assignees = resolveAssignees(task.assignees, board);
    if (!assignees) return Failure(assignees.error());
    const auto labels = resolveLabels(task.labels, board);
    if (!labels) return Failure(labels.error());

    Transaction transaction(stores_.database);
    const ListId list = task.list ? *task.list : stores_.boards.lists(board.id).front().id;
    const TaskId id = stores_.tasks.create({.board = board.id,
                                            .list = list,
                                            .parent = task.parent,
                                            .title = task.title,
                                            .description = task.description,
                                            .priority = task.priority,
                                            .startDate = task.startDate,
                                            .dueDate = task.dueDate,
                                            .dueTime = task.dueDate ? task.dueTime : std::nullopt,
                                            .creator = actor.id});
    if (list == board.completionList) stores_.tasks.setCompletion(id, clock_.now(), std::nullopt);
    stores_.tasks.setAssignees(id, *assignees);
    stores_.tasks.setLabels(id, *labels);
    stores_.tasks.addActivity(id, actor.id, "created this task");
    Effects effects;
    notifyAssigned(effects, actor, *assignees, id, task.title);
    transaction.commit();

    Change change{.boards = {board.id}, .tasks = {id}, .inboxes = effects.inboxes};
    if (task.parent) change.tasks.push_back(*task.parent);
    changes_.publish(change);
    return id;
}

Result<void, UnresolvedReference> TaskActions::edit(const Account& actor, const TaskRow& task, const Edit& edit) {
    const BoardRow board = boardOf(task, actor);
    std::optional<std::vector<PersonId>> assignees;
    if (edit.assignees) {
        auto resolved = resolveAssignees(*edit.assignees, board);
        if (!resolved) return Failure(resolved.error());
        assignees = std::move(*resolved);
    }
    std::optional<std::vector<LabelId>> labels;
    if (edit.labels) {
        auto resolved = resolveLabels(*edit.labels, board);
        if (!resolved) return Failure(resolved.error());
        labels = std::move(*resolved);
    }

    Effects effects;
    Transaction transaction(stores_.database);
    auto& tasks = stores_.tasks;
    const auto note = [&](const std::string& text) { tasks.addActivity(task.id, actor.id, text); };
    const std::string title = edit.title.value_or(task.title);
    if (edit.title && *edit.title != task.title) {
        tasks.setTitle(task.id, *edit.title);
        note(fmt::format("renamed this task to “{}”", *edit.title));
    }
    if (edit.description && *edit.description != task.description) {
        tasks.setDescription(task.id, *edit.description);
        note("changed the description");
    }
    if (edit.priority && *edit.priority != task.priority) {
        tasks.setPriority(task.id, *edit.priority);
        note(fmt::format("set the priority to {}", priorities[static_cast<std::size_t>(*edit.priority)]));
    }
    const auto patched = [](const auto& patch, auto present) {
        if (patch.isKeep()) return present;
        if (patch.isClear()) return decltype(present){};
        return decltype(present){*patch.value()};
    };
    const auto dueDate = patched(edit.dueDate, task.dueDate);
    // A time of day means nothing without a day.
    const auto dueTime = dueDate ? patched(edit.dueTime, task.dueTime) : std::nullopt;
    if (dueDate != task.dueDate || dueTime != task.dueTime) {
        tasks.setDue(task.id, dueDate, dueTime);
        note(dueDate ? fmt::format("set the due date to {}{}{}", *dueDate, dueTime ? " " : "", dueTime.value_or(""))
                     : "cleared the due date");
    }
    if (!edit.startDate.isKeep()) tasks.setStartDate(task.id, patched(edit.startDate, task.startDate));
    if (!edit.estimateMinutes.isKeep()) tasks.setEstimate(task.id, patched(edit.estimateMinutes, task.estimateMinutes));
    if (assignees) {
        const auto before = tasks.assignees(task.id);
        tasks.setAssignees(task.id, *assignees);
        auto added = *assignees;
        std::erase_if(added, [&](PersonId person) { return contains(before, person); });
        if (before != tasks.assignees(task.id)) note("changed the assignees");
        notifyAssigned(effects, actor, added, task.id, title);
    }
    if (labels) tasks.setLabels(task.id, *labels);
    if (edit.list && *edit.list != task.list) moveToList(effects, actor, task, board, {.list = *edit.list});
    if (edit.done) setDone(effects, actor, *tasks.find(task.id), board, *edit.done);
    transaction.commit();
    changes_.publish({.boards = {task.board}, .tasks = {task.id}, .inboxes = effects.inboxes, .timer = effects.timer});
    return {};
}

void TaskActions::move(const Account& actor, const TaskRow& task, const TaskStore::Place& place) {
    Effects effects;
    Transaction transaction(stores_.database);
    moveToList(effects, actor, task, boardOf(task, actor), place);
    transaction.commit();
    changes_.publish({.boards = {task.board}, .tasks = {task.id}, .inboxes = effects.inboxes, .timer = effects.timer});
}

void TaskActions::moveToList(Effects& effects, const Account& actor, const TaskRow& task, const BoardRow& board,
                             const TaskStore::Place& place) {
    stores_.tasks.place(task.id, place);
    if (place.list == task.list) return;
    stores_.tasks.addActivity(task.id, actor.id,
                              fmt::format("moved this task to {}", stores_.boards.findList(place.list)->name));
    // The completion list holds what is finished, whichever way it got there.
    if (place.list == board.completionList) {
        if (!task.done()) complete(effects, actor, task);
    } else if (task.done() && task.list == board.completionList) {
        reopen(actor, task);
    }
}

void TaskActions::complete(Effects& effects, const Account& actor, const TaskRow& task) {
    stores_.tasks.setCompletion(task.id, clock_.now(), task.list);
    stores_.tasks.addActivity(task.id, actor.id, "completed this task");
    if (const auto timer = stores_.timers.ofPerson(actor.id); timer && timer->task == task.id) {
        finishTimer(*timer);
        effects.timer = actor.id;
    }
    if (task.createdBy) {
        notify(effects, actor, *task.createdBy, doneKind, fmt::format("{} completed {}", actor.name, task.title),
               task.id);
    }
}

void TaskActions::reopen(const Account& actor, const TaskRow& task) {
    stores_.tasks.setCompletion(task.id, std::nullopt, std::nullopt);
    stores_.tasks.addActivity(task.id, actor.id, "reopened this task");
}

void TaskActions::setDone(Effects& effects, const Account& actor, const TaskRow& task, const BoardRow& board,
                          bool done) {
    if (task.done() == done) return;
    if (done) {
        complete(effects, actor, task);
        if (board.completionList && task.list != *board.completionList) {
            stores_.tasks.placeFirst(task.id, *board.completionList);
        }
        return;
    }
    reopen(actor, task);
    if (task.list == board.completionList) {
        // Back to where it came from, if that list is still there.
        const auto lists = stores_.boards.lists(board.id);
        ListId target = lists.front().id;
        for (const ListRow& list : lists) {
            if (list.id == task.listBeforeDone && list.id != *board.completionList) target = list.id;
        }
        stores_.tasks.place(task.id, {.list = target});
    }
}

void TaskActions::remove(const Account& actor, const TaskRow& task) {
    Transaction transaction(stores_.database);
    stores_.tasks.setDeletion(task.id, clock_.now());
    stores_.tasks.addActivity(task.id, actor.id, "deleted this task");
    const auto timer = stores_.timers.onTask(task.id, actor.id);
    const bool stops = timer && timer->person == actor.id;
    if (stops) finishTimer(*timer);
    transaction.commit();
    changes_.publish(
        {.boards = {task.board}, .tasks = {task.id}, .timer = stops ? std::optional(actor.id) : std::nullopt});
}

void TaskActions::restore(const Account& actor, const TaskRow& task) {
    Transaction transaction(stores_.database);
    stores_.tasks.setDeletion(task.id, std::nullopt);
    stores_.tasks.addActivity(task.id, actor.id, "restored this task");
    transaction.commit();
    changes_.publish({.boards = {task.board}, .tasks = {task.id}});
}

CommentId TaskActions::comment(const Account& actor, const TaskRow& task, const std::string& body) {
    Effects effects;
    Transaction transaction(stores_.database);
    const CommentId id = stores_.comments.add(task.id, actor.id, body);
    const auto assignees = stores_.tasks.assignees(task.id);
    for (const PersonId person : stores_.boards.audience(task.board)) {
        const auto account = stores_.accounts.find(person);
        if (account && mentions(body, *account)) {
            notify(effects, actor, person, mentionKind, fmt::format("{} mentioned you on {}", actor.name, task.title),
                   task.id);
        } else if (contains(assignees, person) || task.createdBy == person) {
            notify(effects, actor, person, commentKind, fmt::format("{} commented on {}", actor.name, task.title),
                   task.id);
        }
    }
    transaction.commit();
    changes_.publish({.boards = {task.board}, .tasks = {task.id}, .inboxes = effects.inboxes});
    return id;
}

void TaskActions::startTimer(const Account& actor, const TaskRow& task) {
    Transaction transaction(stores_.database);
    std::vector<TaskId> changed = {task.id};
    if (const auto running = stores_.timers.ofPerson(actor.id)) {
        if (running->task == task.id) return transaction.commit();
        changed.push_back(running->task);
        finishTimer(*running);
    }
    stores_.timers.start({actor.id, task.id, clock_.now()});
    transaction.commit();
    changes_.publish({.boards = {task.board}, .tasks = changed, .timer = actor.id});
}

void TaskActions::stopTimer(const Account& actor, const TaskRow& task) {
    const auto running = stores_.timers.ofPerson(actor.id);
    if (!running || running->task != task.id) return;
    Transaction transaction(stores_.database);
    finishTimer(*running);
    transaction.commit();
    changes_.publish({.boards = {task.board}, .tasks = {task.id}, .timer = actor.id});
}

void TaskActions::touched(const TaskRow& task) {
    changes_.publish({.boards = {task.board}, .tasks = {task.id}});
}

void TaskActions::finishTimer(const TimerRow& timer) {
    const auto elapsed = std::max((clock_.now() - timer.startedAt).count(), Instant::rep{0});
    stores_.tasks.addTracked(timer.task, elapsed);
    stores_.timers.remove(timer.person);
}

void TaskActions::notify(Effects& effects, const Account& actor, PersonId recipient, const char* kind,
                         const std::string& text, TaskId task) {
    if (recipient == actor.id) return;
    stores_.notifications.add({recipient, kind, text, actor.id, task});
    effects.inboxes.push_back(recipient);
}

void TaskActions::notifyAssigned(Effects& effects, const Account& actor, const std::vector<PersonId>& people,
                                 TaskId task, const std::string& title) {
    for (const PersonId person : people) {
        notify(effects, actor, person, assignedKind, fmt::format("{} assigned you {}", actor.name, title), task);
    }
}

BoardRow TaskActions::boardOf(const TaskRow& task, const Account& viewer) {
    return stores_.boards.find(task.board, viewer.id).value();
}

}  // namespace parvela::service
