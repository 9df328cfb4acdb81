#include "Domain/Contains.h"
#include "Routes/BodyReader.h"
#include "Routes/Routes.h"
#include "Routes/TaskInput.h"

#include <ParvelaKit/Json/Encoder.h>

#include <algorithm>

namespace parvela::service {

namespace {

/// A list that long is beyond what a person reads; "more" tells that there are others.
constexpr int mostTasks = 1000;
constexpr int usualSearch = 25;
constexpr int mostSearch = 100;
constexpr int usualNotifications = 50;
constexpr int mostNotifications = 200;
constexpr int homeTasks = 50;
/// "Upcoming" on the home page: the week that follows today.
constexpr int upcomingDays = 7;

template <class Record>
Response recordAnswer(const Record& record) {
    return Response::json(json::toJson(record));
}

struct TaskList {
    std::vector<TaskId> ids;
    int limit;

    bool full() const { return std::cmp_greater(ids.size(), limit); }
    int room() const { return std::max(0, limit + 1 - static_cast<int>(ids.size())); }
    void append(const std::vector<TaskId>& more) {
        for (const TaskId id : more) {
            if (!full() && !contains(ids, id)) ids.push_back(id);
        }
    }
};

/// The tasks that a list call asks for: open ones by due date, then finished ones.
///
/// "today" is what must be looked at today: everything open that is due by the end of the day, and what was finished
/// today of it, so that a tick can be taken back. "week" reaches six days further. "overdue" ends yesterday.
Result<TaskList, HttpError> listTasks(Backend& backend, Call& call) {
    const Request& request = call.request;
    const auto limit = Backend::limit(request, mostTasks, mostTasks);
    if (!limit) return Failure(limit.error());
    TaskQueries::Scope scope{.viewer = call.person().id, .mine = request.queryItem("mine") == "1"};
    if (const auto board = request.queryItem("board")) {
        scope.board = BoardId::parse(*board);
        if (!scope.board || !backend.stores.boards.canSee(*scope.board, scope.viewer)) {
            return Failure(HttpError::notFound("There is no such board."));
        }
    }
    const bool includeDone = request.queryItem("include_done") == "1";
    const std::string due = request.queryItem("due").value_or("");
    const CivilDate today = backend.today(call.person());
    const std::string first = today.text();
    const std::string tomorrow = today.addingDays(1).text();
    const std::string weekEnd = today.addingDays(7).text();
    auto& queries = backend.stores.queries;
    TaskList list{{}, *limit};

    if (due.empty()) {
        list.append(queries.open(scope, {}, list.room()));
        if (includeDone) list.append(queries.completedSince(scope, Instant{}, {}, list.room()));
    } else if (due == "today") {
        list.append(queries.open(scope, {.end = tomorrow}, list.room()));
        const Instant midnight = backend.zoneOf(call.person()).startOf(today);
        list.append(queries.completedSince(scope, midnight, {.end = tomorrow}, list.room()));
        if (includeDone) list.append(queries.completedDue(scope, {first, tomorrow}, list.room()));
    } else if (due == "week") {
        list.append(queries.open(scope, {.end = weekEnd}, list.room()));
        if (includeDone) list.append(queries.completedDue(scope, {first, weekEnd}, list.room()));
    } else if (due == "overdue") {
        list.append(queries.open(scope, {.end = first}, list.room()));
    } else {
        return Failure(HttpError::badRequest("“due” must be today, week or overdue."));
    }
    return list;
}

Answer taskList(Backend& backend, Call& call) {
    auto list = listTasks(backend, call);
    if (!list) return Failure(list.error());
    const bool more = list->full();
    if (more) list->ids.pop_back();
    TasksResponse response{.today = backend.today(call.person()).text(),
                           .tasks = backend.answers(call).tasks(list->ids)};
    auto body = json::toJson(response);
    body["more"] = more;
    return Response::json(body);
}

Answer search(Backend& backend, Call& call, const std::string& text) {
    const auto limit = Backend::limit(call.request, usualSearch, mostSearch);
    if (!limit) return Failure(limit.error());
    std::vector<TaskId> ids;
    // A key names one task; it comes first.
    if (const auto id = parseTaskReference(text); id && backend.task(*id, call.person())) ids.push_back(*id);
    for (const TaskId id : backend.stores.queries.search(call.person().id, text, *limit)) {
        if (std::cmp_less(ids.size(), *limit) && !contains(ids, id)) ids.push_back(id);
    }
    return recordAnswer(SearchResponse{backend.answers(call).tasks(ids)});
}

Answer home(Backend& backend, Call& call) {
    const Account& me = call.person();
    const CivilDate today = backend.today(me);
    const std::string first = today.text();
    const std::string tomorrow = today.addingDays(1).text();
    const std::string later = today.addingDays(1 + upcomingDays).text();
    auto answers = backend.answers(call);
    auto& queries = backend.stores.queries;
    const TaskQueries::Scope mine{.viewer = me.id, .mine = true};
    const auto tasks = [&](const TaskQueries::DueRange& range) {
        return answers.tasks(queries.open(mine, range, homeTasks));
    };

    HomeData data{.today = first,
                  .me = {.id = me.id.text(), .name = me.name, .color = me.color, .avatar = {}, .email = me.email},
                  .counts = {.overdue = queries.countMine(me.id, {.end = first}),
                             .today = queries.countMine(me.id, {first, tomorrow}),
                             .upcoming = queries.countMine(me.id, {tomorrow, later}),
                             .later = queries.countMine(me.id, {.first = later}),
                             .doneToday = queries.countMineCompletedSince(me.id, backend.zoneOf(me).startOf(today))},
                  .overdue = tasks({.end = first}),
                  .dueToday = tasks({first, tomorrow}),
                  .upcoming = tasks({tomorrow, later}),
                  .later = tasks({.first = later}),
                  .unread = backend.stores.notifications.unread(me.id)};
    if (const auto workspace = backend.stores.accounts.workspace()) {
        data.workspace = {workspace->id.text(), workspace->name, me.role, "local"};
    }
    for (const BoardRow& board : backend.stores.boards.visibleTo(me.id)) data.boards.push_back(answers.glance(board));
    return recordAnswer(data);
}

Answer createTask(Backend& backend, Call& call) {
    BodyReader body(call.request);
    const auto boardId = BoardId::parse(body.required("board", referenceText));
    TaskActions::NewTask task = readNewTask(body);
    const auto list = body.optional("list", Text::line(200));
    if (body.error()) return Failure(*body.error());
    const auto board = boardId ? backend.stores.boards.find(*boardId, call.person().id) : std::nullopt;
    if (!board) return Failure(HttpError::notFound("There is no such board."));
    if (list && !list->empty()) {
        const auto id = backend.listOf(*board, *list);
        if (!id) return Failure(id.error());
        task.list = *id;
    }
    const auto id = backend.actions.create(call.person(), *board, task);
    if (!id) return Failure(HttpError::badRequest(id.error().message));
    return Response::json(backend.answers(call).card(*backend.stores.tasks.find(*id)));
}

Answer updateTask(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    TaskActions::Edit edit = readTaskEdit(body);
    const auto list = body.optional("list", Text::line(200));
    if (body.error()) return Failure(*body.error());
    if (list) {
        const auto id = backend.listOf(*backend.stores.boards.find(task->board, call.person().id), *list);
        if (!id) return Failure(id.error());
        edit.list = *id;
    }
    const auto edited = backend.actions.edit(call.person(), *task, edit);
    if (!edited) return Failure(HttpError::badRequest(edited.error().message));
    return Response::json(backend.answers(call).card(*backend.stores.tasks.find(task->id)));
}

Answer addComment(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    const std::string text = body.required("body", commentText);
    if (body.error()) return Failure(*body.error());
    const CommentId id = backend.actions.comment(call.person(), *task, text);
    return recordAnswer(CommentResponse{.task = taskKey(task->id), .commentId = id.text(), .posted = true});
}

Answer tickItem(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    BodyReader body(call.request);
    const auto item = ItemId::parse(body.required("item", referenceText));
    const auto done = body.flag("done");
    if (!done) body.fail(HttpError::invalid("“done” is missing."));
    if (body.error()) return Failure(*body.error());
    if (!item || backend.stores.checklists.taskOf(*item) != task->id) {
        return Failure(HttpError::notFound("There is no such checklist item."));
    }
    backend.stores.checklists.setItemDone(*item, *done);
    backend.actions.touched(*task);
    return Response::ok();
}

Answer notifications(Backend& backend, Call& call) {
    const auto limit = Backend::limit(call.request, usualNotifications, mostNotifications);
    if (!limit) return Failure(limit.error());
    auto answers = backend.answers(call);
    NotificationsResponse response{.unread = backend.stores.notifications.unread(call.person().id), .items = {}};
    for (const NotificationRow& row : backend.stores.notifications.latest(call.person().id, *limit)) {
        response.items.push_back(answers.notification(row));
    }
    return recordAnswer(response);
}

Answer markNotifications(Backend& backend, Call& call) {
    BodyReader body(call.request);
    const bool all = body.flag("all").value_or(false);
    const bool read = body.flag("read").value_or(true);
    std::vector<NotificationId> ids;
    for (const std::string& text : body.texts("ids").value_or(std::vector<std::string>())) {
        if (const auto id = NotificationId::parse(text)) ids.push_back(*id);
    }
    if (body.error()) return Failure(*body.error());
    const PersonId me = call.person().id;
    all ? backend.stores.notifications.markAll(me, read) : backend.stores.notifications.mark(me, ids, read);
    backend.changes.publish({.inboxes = {me}});
    return Response::ok();
}

Answer registerPush(Backend& backend, Call& call) {
    BodyReader body(call.request);
    const ApiTokenStore::PushDevice device{.token = body.required("token", Text::line(500)),
                                           .platform = body.required("platform", Text::line(20)),
                                           .environment = body.required("environment", Text::line(20)),
                                           .bundleId = body.required("bundleId", Text::line(200))};
    if (device.environment != "sandbox" && device.environment != "production") {
        body.fail(HttpError::invalid("“environment” must be sandbox or production."));
    }
    if (body.error()) return Failure(*body.error());
    backend.stores.tokens.registerPush(call.person().id, device);
    return Response::ok();
}

Answer unregisterPush(Backend& backend, Call& call) {
    BodyReader body(call.request);
    const std::string token = body.required("token", Text::line(500));
    if (body.error()) return Failure(*body.error());
    backend.stores.tokens.unregisterPush(call.person().id, token);
    return Response::ok();
}

Answer revokeToken(Backend& backend, Call& call) {
    if (!call.caller->token) return Failure(HttpError::badRequest("This call revokes the token it is made with."));
    backend.stores.tokens.revoke(*call.caller->token, call.person().id);
    return Response::ok();
}

}  // namespace

void addApiRoutes(Router& router, Backend& backend) {
    const auto bound = bindTo(backend);
    const auto onBoard = [&backend](auto describe) {
        return [&backend, describe](Call& call) -> Answer {
            const auto board = backend.board(call);
            if (!board) return Failure(board.error());
            return recordAnswer(describe(backend.answers(call), *board));
        };
    };
    using enum Access;
    router.add("GET", "/api/v1/me", reader,
               [&](Call& call) -> Answer { return recordAnswer(backend.answers(call).me()); });
    router.add("GET", "/api/v1/boards", reader,
               [&](Call& call) -> Answer { return recordAnswer(backend.answers(call).boards()); });
    router.add("GET", "/api/v1/boards/{}", reader,
               onBoard([](Answers answers, const BoardRow& board) { return answers.board(board); }));
    router.add("GET", "/api/v1/boards/{}/summary", reader,
               onBoard([](Answers answers, const BoardRow& board) { return answers.summary(board); }));
    router.add("GET", "/api/v1/home", reader, bound(home));
    router.add("GET", "/api/v1/people", reader,
               [&](Call& call) -> Answer { return recordAnswer(backend.answers(call).everybody()); });
    router.add("GET", "/api/v1/tasks", reader, [&](Call& call) -> Answer {
        if (const auto text = call.request.queryItem("q")) return search(backend, call, *text);
        return taskList(backend, call);
    });
    router.add("POST", "/api/v1/tasks", writer, bound(createTask));
    router.add("GET", "/api/v1/tasks/{}", reader, [&](Call& call) -> Answer {
        const auto task = backend.task(call);
        if (!task) return Failure(task.error());
        return Response::json(backend.answers(call).card(*task));
    });
    router.add("PATCH", "/api/v1/tasks/{}", writer, bound(updateTask));
    router.add("GET", "/api/v1/tasks/{}/detail", reader, [&](Call& call) -> Answer {
        const auto task = backend.task(call);
        if (!task) return Failure(task.error());
        return recordAnswer(backend.answers(call).detail(*task, call.caller->canWrite));
    });
    router.add("POST", "/api/v1/tasks/{}/comments", writer, bound(addComment));
    router.add("POST", "/api/v1/tasks/{}/checklist", writer, bound(tickItem));
    // The web app asks under the shorter address.
    for (const char* path : {"/api/v1/notifications", "/api/notifications"}) {
        router.add("GET", path, reader, bound(notifications));
    }
    router.add("POST", "/api/v1/notifications/read", writer, bound(markNotifications));
    router.add("POST", "/api/v1/devices/push", reader, bound(registerPush));
    router.add("POST", "/api/v1/devices/push/remove", reader, bound(unregisterPush));
    router.add("POST", "/api/v1/token/revoke", reader, bound(revokeToken));
    router.add("GET", "/api/v1/changed", reader,
               [&](Call&) -> Answer { return recordAnswer(ChangedResponse{backend.changes.revision()}); });
}

}  // namespace parvela::service
