#pragma once

#include <ParvelaKit/Json/Fields.h>
#include <ParvelaKit/Records/People.h>

#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// Everything about one task. Dates are "YYYY-MM-DD", times of day "HH:MM", moments milliseconds since 1970.
struct TaskDetail {
    struct Item {
        std::string id;
        std::string text;
        bool done = false;

        bool operator==(const Item&) const = default;
        static constexpr auto fields = std::tuple{json::field("id", &Item::id), json::field("text", &Item::text),
                                                  json::field("done", &Item::done)};
    };

    struct Checklist {
        std::string id;
        std::string title;
        std::vector<Item> items;

        bool operator==(const Checklist&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &Checklist::id), json::field("title", &Checklist::title),
                       json::field("items", &Checklist::items)};
    };

    /// Another task that this one names.
    struct Ref {
        std::string id;
        std::string key;
        std::string title;
        std::optional<bool> done;

        bool operator==(const Ref&) const = default;
        static constexpr auto fields = std::tuple{json::field("id", &Ref::id), json::field("key", &Ref::key),
                                                  json::field("title", &Ref::title), json::field("done", &Ref::done)};
    };

    struct Timer {
        std::optional<std::string> userId;
        std::optional<double> startedAt;

        bool operator==(const Timer&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("userId", &Timer::userId), json::field("startedAt", &Timer::startedAt)};
    };

    struct File {
        std::string id;
        std::string name;
        std::optional<std::string> mime;
        std::optional<double> size;  ///< bytes
        std::optional<std::string> url;

        bool operator==(const File&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &File::id), json::field("name", &File::name), json::field("mime", &File::mime),
                       json::field("size", &File::size), json::field("url", &File::url)};
    };

    struct Comment {
        std::string id;
        Person author;
        std::string body;
        double at = 0;
        bool edited = false;
        bool mine = false;

        bool operator==(const Comment&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &Comment::id),         json::field("author", &Comment::author),
                       json::field("body", &Comment::body),     json::field("at", &Comment::at),
                       json::field("edited", &Comment::edited), json::field("mine", &Comment::mine)};
    };

    struct Activity {
        std::string who;
        std::string text;
        double at = 0;

        bool operator==(const Activity&) const = default;
        static constexpr auto fields = std::tuple{
            json::field("who", &Activity::who), json::field("text", &Activity::text), json::field("at", &Activity::at)};
    };

    std::string id;
    std::string key;
    std::string title;
    std::string board;
    std::string boardId;
    std::string list;
    std::string listId;
    std::vector<std::string> assignees;
    std::string priority;
    std::vector<std::string> labels;
    std::optional<std::string> dueDate;
    std::optional<std::string> dueTime;
    bool done = false;
    std::optional<std::string> url;
    std::string description;
    std::optional<std::string> startDate;
    std::optional<double> createdAt;
    std::optional<std::string> createdBy;
    std::vector<Person> people;
    std::vector<LabelTag> labelTags;
    std::vector<Checklist> checklists;
    std::vector<Ref> subtasks;
    std::vector<Ref> blockedBy;
    std::optional<Ref> parent;
    std::optional<double> estimateMinutes;
    double trackedMinutes = 0;
    std::optional<Timer> timer;
    std::vector<File> files;
    std::vector<Comment> comments;
    std::vector<Activity> activity;
    bool canEdit = false;

    bool operator==(const TaskDetail&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("id", &TaskDetail::id),
        json::field("key", &TaskDetail::key),
        json::field("title", &TaskDetail::title),
        json::field("board", &TaskDetail::board),
        json::field("boardId", &TaskDetail::boardId),
        json::field("list", &TaskDetail::list),
        json::field("listId", &TaskDetail::listId),
        json::field("assignees", &TaskDetail::assignees),
        json::field("priority", &TaskDetail::priority),
        json::field("labels", &TaskDetail::labels),
        json::field("dueDate", &TaskDetail::dueDate),
        json::field("dueTime", &TaskDetail::dueTime),
        json::field("done", &TaskDetail::done),
        json::field("url", &TaskDetail::url),
        json::field("description", &TaskDetail::description),
        json::field("startDate", &TaskDetail::startDate),
        json::field("createdAt", &TaskDetail::createdAt),
        json::field("createdBy", &TaskDetail::createdBy),
        json::field("people", &TaskDetail::people),
        json::field("labelTags", &TaskDetail::labelTags),
        json::field("checklists", &TaskDetail::checklists),
        json::field("subtasks", &TaskDetail::subtasks),
        json::field("blockedBy", &TaskDetail::blockedBy),
        json::field("parent", &TaskDetail::parent),
        json::field("estimateMinutes", &TaskDetail::estimateMinutes),
        json::field("trackedMinutes", &TaskDetail::trackedMinutes),
        json::field("timer", &TaskDetail::timer),
        json::field("files", &TaskDetail::files),
        json::field("comments", &TaskDetail::comments),
        json::field("activity", &TaskDetail::activity),
        json::field("canEdit", &TaskDetail::canEdit),
    };
};

}  // namespace parvela
