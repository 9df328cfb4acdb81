#pragma once

#include <ParvelaKit/Json/Fields.h>
#include <ParvelaKit/Records/Patch.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// Which due dates a task list is limited to. `today` includes what is overdue and open.
enum class DueFilter { today, week, overdue };

constexpr std::array<json::EnumText<DueFilter>, 3> enumTexts(DueFilter) {
    return {{{DueFilter::today, "today"}, {DueFilter::week, "week"}, {DueFilter::overdue, "overdue"}}};
}

/// A task to be created. Absent fields are left out of the body.
struct NewTask {
    std::string board;  ///< id
    std::optional<std::string> list;
    std::string title;
    std::optional<std::string> description;
    std::optional<std::vector<std::string>> assignees;  ///< ids or names
    std::optional<std::string> dueDate;                 ///< "YYYY-MM-DD"
    std::optional<std::string> dueTime;                 ///< "HH:MM"
    std::optional<std::string> priority;
    std::optional<std::vector<std::string>> labels;  ///< ids or names

    bool operator==(const NewTask&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("board", &NewTask::board),         json::field("list", &NewTask::list),
        json::field("title", &NewTask::title),         json::field("description", &NewTask::description),
        json::field("assignees", &NewTask::assignees), json::field("dueDate", &NewTask::dueDate),
        json::field("dueTime", &NewTask::dueTime),     json::field("priority", &NewTask::priority),
        json::field("labels", &NewTask::labels),
    };
};

/// Quick changes of a task; absent fields stay as they are.
struct TaskPatch {
    std::optional<std::string> title;
    std::optional<std::string> description;
    std::optional<std::string> priority;
    std::optional<bool> done;
    std::optional<std::string> list;

    bool operator==(const TaskPatch&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("title", &TaskPatch::title), json::field("description", &TaskPatch::description),
                   json::field("priority", &TaskPatch::priority), json::field("done", &TaskPatch::done),
                   json::field("list", &TaskPatch::list)};
};

/// A full edit of a task, field by field.
struct TaskEdit {
    Patch<std::string> title;
    Patch<std::string> description;
    Patch<std::string> priority;
    Patch<std::string> dueDate;
    Patch<std::string> dueTime;
    Patch<std::vector<std::string>> assignees;
    Patch<std::vector<std::string>> labels;
    Patch<std::string> list;
    Patch<bool> done;

    bool operator==(const TaskEdit&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("title", &TaskEdit::title),       json::field("description", &TaskEdit::description),
        json::field("priority", &TaskEdit::priority), json::field("dueDate", &TaskEdit::dueDate),
        json::field("dueTime", &TaskEdit::dueTime),   json::field("assignees", &TaskEdit::assignees),
        json::field("labels", &TaskEdit::labels),     json::field("list", &TaskEdit::list),
        json::field("done", &TaskEdit::done),
    };
};

/// The text of a new comment.
struct CommentDraft {
    std::string body;

    bool operator==(const CommentDraft&) const = default;
    static constexpr auto fields = std::tuple{json::field("body", &CommentDraft::body)};
};

/// Ticks a checklist item, or takes the tick away.
struct ChecklistTick {
    std::string item;  ///< id
    bool done = false;

    bool operator==(const ChecklistTick&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("item", &ChecklistTick::item), json::field("done", &ChecklistTick::done)};
};

/// Marks the named notifications, or all of them, as read or unread.
struct NotificationMark {
    std::vector<std::string> ids;
    bool all = false;
    bool read = true;

    bool operator==(const NotificationMark&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("ids", &NotificationMark::ids), json::field("all", &NotificationMark::all),
                   json::field("read", &NotificationMark::read)};
};

/// Where the service may push notifications to.
struct PushRegistration {
    enum class Environment { sandbox, production };

    friend constexpr std::array<json::EnumText<Environment>, 2> enumTexts(Environment) {
        return {{{Environment::sandbox, "sandbox"}, {Environment::production, "production"}}};
    }

    std::string platform = "macos";  ///< the one desktop platform the service knows
    std::string token;
    Environment environment = Environment::production;
    std::string bundleId;

    bool operator==(const PushRegistration&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("platform", &PushRegistration::platform), json::field("token", &PushRegistration::token),
                   json::field("environment", &PushRegistration::environment),
                   json::field("bundleId", &PushRegistration::bundleId, json::KeyStyle::asNamed)};
};

/// Ends the pushing to one token.
struct PushRemoval {
    std::string token;

    bool operator==(const PushRemoval&) const = default;
    static constexpr auto fields = std::tuple{json::field("token", &PushRemoval::token)};
};

}  // namespace parvela
