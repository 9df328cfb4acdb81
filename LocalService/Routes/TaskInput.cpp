#include "Routes/TaskInput.h"

namespace parvela::service {

namespace {

constexpr std::int64_t mostMinutes = std::int64_t{60} * 24 * 365;
constexpr const char* titleNeeded = "Give the task a title.";

}  // namespace

TaskActions::NewTask readNewTask(BodyReader& body) {
    TaskActions::NewTask task;
    task.title = body.optional("title", taskTitleText).value_or("");
    if (task.title.empty()) body.fail(HttpError::invalid(titleNeeded));
    task.description = body.optional("description", taskDescriptionText).value_or("");
    task.assignees = body.texts("assignees").value_or(std::vector<std::string>());
    task.labels = body.texts("labels").value_or(std::vector<std::string>());
    task.dueDate = body.date("due_date");
    task.dueTime = body.timeOfDay("due_time");
    task.startDate = body.date("start_date");
    task.priority = body.priority("priority").value_or(0);
    return task;
}

TaskActions::Edit readTaskEdit(BodyReader& body) {
    TaskActions::Edit edit;
    if (body.has("title")) {
        edit.title = body.optional("title", taskTitleText).value_or("");
        if (edit.title->empty()) body.fail(HttpError::invalid(titleNeeded));
    }
    if (body.has("description")) edit.description = body.optional("description", taskDescriptionText).value_or("");
    edit.priority = body.priority("priority");
    edit.dueDate = body.datePatch("due_date");
    edit.dueTime = body.timeOfDayPatch("due_time");
    edit.startDate = body.datePatch("start_date");
    if (body.isNull("estimate_minutes")) {
        edit.estimateMinutes = Patch<std::int64_t>::clear();
    } else if (const auto minutes = body.integer("estimate_minutes", 0, mostMinutes)) {
        edit.estimateMinutes = Patch<std::int64_t>::set(*minutes);
    }
    edit.assignees = body.texts("assignees");
    edit.labels = body.texts("labels");
    edit.done = body.isNull("done") ? false : body.flag("done");
    return edit;
}

}  // namespace parvela::service
