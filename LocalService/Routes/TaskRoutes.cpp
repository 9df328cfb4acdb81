#include "Routes/BodyReader.h"
#include "Routes/Routes.h"
#include "Routes/TaskInput.h"

namespace parvela::service {

namespace {

constexpr Text checklistTitleText = Text::line(200);
constexpr Text itemText = Text::line(500);

Answer card(Backend& backend, Call& call, TaskId id) {
    return Response::json(backend.answers(call).card(*backend.stores.tasks.find(id)));
}

Answer moveTask(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    const std::string list = body.required("list", referenceText);
    const std::string before = body.optional("before", referenceText).value_or("");
    const std::string after = body.optional("after", referenceText).value_or("");
    if (body.error()) return Failure(*body.error());
    const auto target = backend.listOf(*backend.stores.boards.find(task->board, call.person().id), list);
    if (!target) return Failure(target.error());
    backend.actions.move(call.person(), *task,
                         {.list = *target, .before = parseTaskReference(before), .after = parseTaskReference(after)});
    return card(backend, call, task->id);
}

Answer removeTask(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    backend.actions.remove(call.person(), *task);
    return Response::ok();
}

Answer restoreTask(Backend& backend, Call& call) {
    const auto task = backend.task(call, 0, TaskStore::Deleted::included);
    if (!task) return Failure(task.error());
    if (task->deletedAt) backend.actions.restore(call.person(), *task);
    return card(backend, call, task->id);
}

Answer addChecklist(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    const std::string title = body.required("title", checklistTitleText);
    if (body.error()) return Failure(*body.error());
    const ChecklistId id = backend.stores.checklists.add(task->id, title);
    backend.actions.touched(*task);
    return Response::json({{"id", id.text()}, {"title", title}, {"items", nlohmann::json::array()}});
}

Answer addSubtask(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    TaskActions::NewTask subtask = readNewTask(body);
    if (body.error()) return Failure(*body.error());
    subtask.parent = task->id;
    const BoardRow board = *backend.stores.boards.find(task->board, call.person().id);
    // Beside its parent, unless that is finished already: then the new work starts at the board's beginning.
    if (task->list != board.completionList) subtask.list = task->list;
    const auto id = backend.actions.create(call.person(), board, subtask);
    if (!id) return Failure(HttpError::badRequest(id.error().message));
    return card(backend, call, *id);
}

/// The visible task that a checklist or item belongs to.
template <class IdType>
Result<TaskRow, HttpError> taskHolding(Backend& backend, Call& call, std::optional<IdType> id) {
    const auto task = id ? backend.stores.checklists.taskOf(*id) : std::nullopt;
    if (!task) return Failure(HttpError::notFound());
    return backend.task(*task, call.person());
}

Answer editItem(Backend& backend, Call& call) {
    const auto id = call.id<ItemId>(0);
    const auto task = taskHolding(backend, call, id);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    const auto text = body.has("text") ? std::optional(body.required("text", itemText)) : std::nullopt;
    const auto done = body.flag("done");
    if (body.error()) return Failure(*body.error());
    Transaction transaction(backend.stores.database);
    if (text) backend.stores.checklists.setItemText(*id, *text);
    if (done) backend.stores.checklists.setItemDone(*id, *done);
    transaction.commit();
    backend.actions.touched(*task);
    return Response::ok();
}

struct OwnComment {
    CommentRow comment;
    TaskRow task;
};

/// People change what they said themselves, nothing else.
Result<OwnComment, HttpError> ownComment(Backend& backend, Call& call) {
    const auto id = call.id<CommentId>(0);
    const auto comment = id ? backend.stores.comments.find(*id) : std::nullopt;
    if (!comment) return Failure(HttpError::notFound("There is no such comment."));
    const auto task = backend.task(comment->task, call.person());
    if (!task) return Failure(task.error());
    if (comment->author != call.person().id)
        return Failure(HttpError::forbidden("Only its author can change a comment."));
    return OwnComment{*comment, *task};
}

Answer editComment(Backend& backend, Call& call) {
    const auto own = ownComment(backend, call);
    if (!own) return Failure(own.error());
    BodyReader body(call.request);
    const std::string text = body.required("body", commentText);
    if (body.error()) return Failure(*body.error());
    backend.stores.comments.edit(own->comment.id, text);
    backend.actions.touched(own->task);
    return Response::ok();
}

Answer removeComment(Backend& backend, Call& call) {
    const auto own = ownComment(backend, call);
    if (!own) return Failure(own.error());
    backend.stores.comments.remove(own->comment.id);
    backend.actions.touched(own->task);
    return Response::ok();
}

Answer runningTimer(Backend& backend, Call& call) {
    const auto timer = backend.stores.timers.ofPerson(call.person().id);
    const auto task = timer ? backend.stores.tasks.find(timer->task) : std::nullopt;
    if (!task) return Response::json({{"timer", nullptr}});
    return Response::json({{"timer",
                            {{"task_key", taskKey(task->id)},
                             {"task_title", task->title},
                             {"board_name", task->boardName},
                             {"started_at", milliseconds(timer->startedAt)}}}});
}

Answer setTimer(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    const std::string state = body.required("state", referenceText);
    if (state != "started" && state != "stopped") body.fail(HttpError::invalid("“state” must be started or stopped."));
    if (body.error()) return Failure(*body.error());
    state == "started" ? backend.actions.startTimer(call.person(), *task)
                       : backend.actions.stopTimer(call.person(), *task);
    return runningTimer(backend, call);
}

}  // namespace

void addTaskRoutes(Router& router, Backend& backend) {
    const auto bound = bindTo(backend);
    using enum Access;
    router.add("POST", "/api/tasks/{}/move", writer, bound(moveTask));
    router.add("DELETE", "/api/tasks/{}", writer, bound(removeTask));
    router.add("POST", "/api/tasks/{}/restore", writer, bound(restoreTask));
    router.add("POST", "/api/tasks/{}/subtasks", writer, bound(addSubtask));
    router.add("POST", "/api/tasks/{}/checklists", writer, bound(addChecklist));
    router.add("POST", "/api/checklists/{}/items", writer, [&](Call& call) -> Answer {
        const auto id = call.id<ChecklistId>(0);
        const auto task = taskHolding(backend, call, id);
        if (!task) return Failure(task.error());
        BodyReader body(call.request);
        const std::string text = body.required("text", itemText);
        if (body.error()) return Failure(*body.error());
        const ItemId item = backend.stores.checklists.addItem(*id, text);
        backend.actions.touched(*task);
        return Response::json({{"id", item.text()}, {"text", text}, {"done", false}});
    });
    router.add("DELETE", "/api/checklists/{}", writer, [&](Call& call) -> Answer {
        const auto id = call.id<ChecklistId>(0);
        const auto task = taskHolding(backend, call, id);
        if (!task) return Failure(task.error());
        backend.stores.checklists.remove(*id);
        backend.actions.touched(*task);
        return Response::ok();
    });
    router.add("PATCH", "/api/items/{}", writer, bound(editItem));
    router.add("DELETE", "/api/items/{}", writer, [&](Call& call) -> Answer {
        const auto id = call.id<ItemId>(0);
        const auto task = taskHolding(backend, call, id);
        if (!task) return Failure(task.error());
        backend.stores.checklists.removeItem(*id);
        backend.actions.touched(*task);
        return Response::ok();
    });
    router.add("PATCH", "/api/comments/{}", writer, bound(editComment));
    router.add("DELETE", "/api/comments/{}", writer, bound(removeComment));
    router.add("POST", "/api/tasks/{}/timer", writer, bound(setTimer));
    router.add("GET", "/api/timer", reader, bound(runningTimer));
}

}  // namespace parvela::service
